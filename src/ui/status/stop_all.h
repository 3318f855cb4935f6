#pragma once

#include <gdk/gdk.h>

#include <optional>

#include "runtime/timer.h"

namespace zemblar {

/// Stops everything: stops all scripts and sends an emergency stop to all locomotives. A second
/// request within two seconds switches the track power off. The status line says what has been
/// done, and which trains could not be reached.
///
/// Ctrl+Shift+Space requests it in every window of the program. The key is handled before any
/// widget gets it, so that no open menu, dialog or text field can intercept it. The key is
/// recognised by its position on the keyboard, because in some layouts it has another meaning with
/// Shift.
class StopAll {
 public:
  static constexpr std::chrono::seconds second_press{2};

  /// The one instance of the process.
  static StopAll& get();
  /// Installs the handler of the key. Call once.
  static void install();

  void press();

 private:
  bool on_key(const GdkEventKey& event);
  void watch_shift(const GdkEventKey& event);
  [[nodiscard]] bool is_shifted(const GdkEventKey& event) const;
  void on_space(bool pressed);

  std::optional<Clock::time_point> pressed_;  // time of the last request
  bool space_is_down_ = false;
  Clock::time_point space_seen_{};  // time of the last press of the key, including repetitions
  std::optional<Clock::time_point> shift_is_down_;  // time of its press; no value while it is up
};

}  // namespace zemblar
