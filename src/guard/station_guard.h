#pragma once

#include <map>
#include <string>
#include <vector>

#include "guard/guard_channel.h"
#include "guard/guard_message.h"

namespace zemblar::guard {

/// How the guarded program has ended or failed.
enum class End {
  leave,   ///< the user has quit the program
  lost,    ///< it has ended without a Leave: a crash, a kill, a signal
  silent,  ///< it runs but sends nothing while a train moves
};

/// The guard's state: the stations of the program, whether a train moves, and whether the program
/// still sends messages.
class StationGuard {
 public:
  explicit StationGuard(GuardChannel channel) : channel_(std::move(channel)) {}
  ~StationGuard();
  StationGuard(const StationGuard&) = delete;
  StationGuard& operator=(const StationGuard&) = delete;

  /// Receives messages until the program ends or is silent for too long.
  [[nodiscard]] End watch();
  [[nodiscard]] std::vector<Station> stations() const;

 private:
  void handle(const GuardChannel::Datagram& datagram);
  void forget(const std::string& key);
  void add(Station station, int line);
  [[nodiscard]] bool hears_in_time() const;

  GuardChannel channel_;
  std::map<std::string, Station> stations_;  // owns the descriptors in `order.line`
  bool driving_ = false;
  bool left_ = false;
};

/// The result of stopping one station.
struct Outcome {
  std::string name{};
  bool stopped = false;
};

/// Stops all stations at the same time; blocks until each has answered or timed out.
[[nodiscard]] std::vector<Outcome> stop_all(const std::vector<Station>& stations);

}  // namespace zemblar::guard
