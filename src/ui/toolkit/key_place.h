#pragma once

#include <gdk/gdk.h>

#include <initializer_list>
#include <optional>

namespace zemblar {

/// True if the key gives one of these keyvals in any configured keyboard layout, with any modifier.
[[nodiscard]] bool has_meaning(const GdkEventKey& event, std::initializer_list<guint> meanings);

/// The digit on a key of the upper row, typed with or without Shift, whether or not the event has
/// Shift; the active layout has priority. A keypad key counts if it types a digit, or would without
/// Shift.
[[nodiscard]] std::optional<unsigned> digit_of(const GdkEventKey& event);

/// True if Shift was held at the event that is being handled.
[[nodiscard]] bool is_shift_held();

}  // namespace zemblar
