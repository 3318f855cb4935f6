#pragma once

#include <functional>

#include "runtime/timer.h"

namespace zemblar {

class Decoder;
class Device;
class Lok;

/// Whether the decoder is to move, or was not told yet that it is not.
[[nodiscard]] bool may_move(const Decoder& decoder);
/// The same for any decoder of the locomotive.
[[nodiscard]] bool may_move(const Lok& lok);

/// Whether any locomotive of the current layout may move, though its link may be lost.
[[nodiscard]] bool any_train_may_move();
/// Whether any locomotive of the current layout may move that this device drives, or any device if
/// it is null. What no device in service drives does not count.
[[nodiscard]] bool any_train_moves(const Device* device = nullptr);

/// An emergency stop of every locomotive of the current layout, those first that may move.
void emergency_stop_all();

/// Sends a last stop by a station that leaves default use to all that it has driven by that.
void stop_before_leaving_default(Device& station);

/// Sends speed 0 to the locomotives that a device drives, or to all, and goes on when they have
/// been told.
///
/// A script may command a speed meanwhile: the locomotive is told again. The end of the object ends
/// the wait, and `then` is forgotten.
class StandStill {
 public:
  /// How long the hardware has for its answers.
  static constexpr std::chrono::seconds patience{1};

  /// Calls `then` at once if nothing moves, else when everything stands or the patience is over.
  /// False, and `then` is not called, while another wait is under way.
  bool begin(std::function<void()> then, const Device* device = nullptr);
  [[nodiscard]] bool under_way() const { return look_.armed(); }

 private:
  Timeout look_;
};

}  // namespace zemblar
