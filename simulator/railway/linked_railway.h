#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "locomotives/lok.h"
#include "simulator/railway/station_link.h"
#include "simulator/trains/track_sensors.h"

namespace zemblar::simulator {

enum class StationKind { ecos, liusb };

/// Random commands while trains run, each after a random time.
struct Traffic {
  std::chrono::milliseconds mean_pause{100};
  /// Share of the speeds that are 0 or emergency stops; of the favourite alone, if there is one.
  double stops = 0;
  double power = 0;  ///< share of the wishes that switch the track power
  /// The address of the locomotive that gets a third of the wishes; half of its functions are
  /// number 2.
  unsigned favourite = 0;
  unsigned spared = 0;  ///< the address of a locomotive that gets no commands
};

/// Locomotives in the current layout, with the addresses from 1 on, that simulated stations drive
/// by default; in virtual time. All that is random comes from the seed.
class LinkedRailway {
 public:
  LinkedRailway(const std::vector<StationKind>& kinds, unsigned trains, std::uint64_t seed);
  ~LinkedRailway();
  LinkedRailway(const LinkedRailway&) = delete;
  LinkedRailway& operator=(const LinkedRailway&) = delete;

  using Links = std::vector<std::unique_ptr<StationLink>>;
  [[nodiscard]] const Links& links() const { return links_; }
  [[nodiscard]] bool all_in_service() const;

  [[nodiscard]] unsigned trains() const { return static_cast<unsigned>(loks_.size()); }
  [[nodiscard]] Lok& lok(unsigned address) { return *loks_.at(address - 1); }
  [[nodiscard]] Decoder& decoder(unsigned address) {
    return *lok(address).get_decoders().front().operator->();
  }
  /// Switches one output of an accessory decoder.
  static void throw_point(unsigned address);

  void begin_traffic(const Traffic& traffic);
  void end_traffic() { next_wish_.cancel(); }
  /// Called after each wish of the traffic with the locomotive's address, 0 for the track power.
  void on_wish(std::function<void(unsigned)> listener) { listener_ = std::move(listener); }

  /// True if the last wish about the track power was to switch it on.
  [[nodiscard]] bool power_wished() const { return power_wished_; }

  static constexpr unsigned functions = 9;  ///< of a locomotive

  VirtualClock clock;
  Chance chance;

 private:
  void wish_later();
  void wish();
  void drive(unsigned address);
  [[nodiscard]] unsigned some_function(unsigned address);
  [[nodiscard]] unsigned some_train();

  Links links_;
  std::vector<Lok*> loks_;
  Traffic traffic_;
  unsigned points_ = 0;
  bool power_wished_ = true;
  std::function<void(unsigned)> listener_;
  Timeout next_wish_;
};

}  // namespace zemblar::simulator
