#pragma once

#include <gdk/gdk.h>

#include <initializer_list>
#include <optional>

namespace zemblar {

/// Whether the key has one of these meanings, in any layout that is set up and with any modifier.
[[nodiscard]] bool has_meaning(const GdkEventKey& event, std::initializer_list<guint> meanings);

/// The digit on a key of the upper row, alone or with Shift, whichever of the two the event has;
/// the layout that types goes first. A key of the keypad counts while it types a digit, or would
/// without Shift.
[[nodiscard]] std::optional<unsigned> digit_of(const GdkEventKey& event);

}  // namespace zemblar
