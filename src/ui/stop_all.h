#pragma once

#include "runtime/timer.h"

namespace zemblar {

/// One stop for everything: scripts sleep, and all locomotives get an emergency stop. Asked for
/// again within two seconds, it switches the track power off. The status line says what has been
/// done, and which trains no station could be told of.
///
/// Ctrl+Shift+Space asks for it in every window of the program, before any widget sees the key: a
/// menu, a dialog or a text field that has the keyboard does not keep it back. The key is known by
/// its place on the keyboard, as some layouts give it another meaning with Shift.
class StopAll {
 public:
  static constexpr std::chrono::seconds second_press{2};

  /// There is one for the process.
  static StopAll& get();
  /// Listens for the key from now on. Once.
  static void install();

  void press();

  /// The key has gone down, perhaps again while it is held, or up.
  void on_key(bool pressed);

 private:
  static void stop_trains();
  static void switch_power_off();

  Clock::time_point pressed_{};  // the last time that it was asked for
  bool is_armed_ = false;        // once more switches the power off
  Clock::time_point key_seen_{};
  bool key_is_down_ = false;
};

}  // namespace zemblar
