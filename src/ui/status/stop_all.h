#pragma once

#include <gdk/gdk.h>

#include <optional>

#include "runtime/timer.h"

namespace zemblar {

/// One stop for everything: scripts sleep, and all locomotives get an emergency stop. A second
/// request within two seconds switches the track power off. The status line says what has been
/// done, and which trains no station could be told of.
///
/// Ctrl+Shift+Space requests it in every window of the program, before any widget sees the key: a
/// menu, a dialog or a text field that has the keyboard does not keep it back. The key is known by
/// its place on the keyboard, as some layouts give it another meaning with Shift.
class StopAll {
 public:
  static constexpr std::chrono::seconds second_press{2};

  /// There is one for the process.
  static StopAll& get();
  /// Listens for the key from now on. Call once.
  static void install();

  void press();

 private:
  bool on_key(const GdkEventKey& event);
  void watch_shift(const GdkEventKey& event);
  [[nodiscard]] bool is_shifted(const GdkEventKey& event) const;
  void on_space(bool pressed);

  std::optional<Clock::time_point> pressed_;  // the last request
  bool space_is_down_ = false;
  Clock::time_point space_seen_{};                  // the last press of the key, repetitions too
  std::optional<Clock::time_point> shift_is_down_;  // since then
};

}  // namespace zemblar
