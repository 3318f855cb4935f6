#pragma once

#include <functional>

#include "runtime/timer.h"

namespace zemblar {

class Decoder;
class Device;
class Lok;

/// True if the decoder's commanded speed is not 0, or a stop has not been delivered yet.
[[nodiscard]] bool may_move(const Decoder& decoder);
/// The same for any decoder of the locomotive.
[[nodiscard]] bool may_move(const Lok& lok);

/// True if any locomotive of the current layout may move, even if its station is out of service.
[[nodiscard]] bool any_train_may_move();
/// True if any locomotive of the current layout may move that `device` drives; null means any
/// device. Only devices in service count.
[[nodiscard]] bool any_train_moves(const Device* device = nullptr);

/// Sends an emergency stop to every locomotive of the current layout, first to those that may move.
void emergency_stop_all();

/// Call before a station is removed from the default device: sends a last stop through it to each
/// decoder that uses the default device.
void stop_before_leaving_default(Device& station);

/// Sends speed 0 to the locomotives that a device drives, or to all, and calls back when the stops
/// have been delivered.
///
/// If a script commands a speed meanwhile, the stop is repeated. Destroying the object ends the
/// wait without calling `then`.
class StandStill {
 public:
  /// How long the hardware may take to answer.
  static constexpr std::chrono::seconds answer_limit{1};

  /// Calls `then` at once if no locomotive moves, else when all stops are delivered or
  /// `answer_limit` has passed. While another wait is under way, returns false and does not call
  /// `then`.
  bool begin(std::function<void()> then, const Device* device = nullptr);
  [[nodiscard]] bool under_way() const { return poll_timer_.armed(); }

 private:
  Timeout poll_timer_;
};

}  // namespace zemblar
