#pragma once

#include "runtime/timer.h"

namespace zemblar {

/// One stop for everything: an emergency stop of all locomotives, and the track power off when it
/// is asked for again within two seconds. The status line says what has been done.
///
/// Ctrl+Shift+Space asks for it in every window of the program, before any widget sees the key: a
/// menu, a dialog or a text field that has the keyboard does not keep it back.
class StopAll {
 public:
  static constexpr std::chrono::seconds second_press{2};

  /// There is one for the process.
  static StopAll& get();
  /// Listens for the key from now on. Once.
  static void install();

  void press();

  /// A press or a release of the key; `repeated` for the repetitions of a key that is held down,
  /// which stop nothing more.
  void on_key(bool pressed);

 private:
  Clock::time_point pressed_{};  // the last time that it was asked for
  bool is_armed_ = false;        // once more switches the power off
  Clock::time_point key_seen_{};
  bool key_is_down_ = false;
};

}  // namespace zemblar
