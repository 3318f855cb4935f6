#pragma once

#include <map>
#include <string>
#include <vector>

#include "guard/guard_channel.h"
#include "guard/guard_message.h"

namespace zemblar::guard {

/// How the program that is guarded has ended, or does not end.
enum class End {
  leave,   ///< the person wanted it
  lost,    ///< without a word: a crash, a kill, a signal
  silent,  ///< it runs and does nothing, while a train drives
};

/// The guard's knowledge of the program: which stations there are, whether a train drives, and
/// when the program was last heard.
class StationGuard {
 public:
  explicit StationGuard(GuardChannel channel) : channel_(std::move(channel)) {}
  ~StationGuard();
  StationGuard(const StationGuard&) = delete;
  StationGuard& operator=(const StationGuard&) = delete;

  /// Listens to the program until it ends or is silent for too long.
  [[nodiscard]] End watch();
  [[nodiscard]] std::vector<Station> stations() const;

 private:
  void take(const GuardChannel::Datagram& datagram);
  void forget(const std::string& key);
  void put(Station station, int line);
  [[nodiscard]] bool hears_in_time() const;

  GuardChannel channel_;
  std::map<std::string, Station> stations_;  // owns their lines
  bool driving_ = false;
  bool left_ = false;
};

/// The result of the order to one station.
struct Outcome {
  std::string name{};
  bool stopped = false;
};

/// Stops all at the same time.
[[nodiscard]] std::vector<Outcome> stop_all(const std::vector<Station>& stations);

}  // namespace zemblar::guard
