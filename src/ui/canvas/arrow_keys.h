#pragma once

#include <gdk/gdkkeysyms.h>

#include <optional>

#include "diagram/vector.h"

namespace zemblar {

/// The direction of an arrow key, also on the keypad, as a vector of length 1; no value for any
/// other key.
[[nodiscard]] inline std::optional<Vector> arrow_way(unsigned key) {
  switch (key) {
    case GDK_KEY_Left:
    case GDK_KEY_KP_Left:
      return Vector{-1, 0};
    case GDK_KEY_Right:
    case GDK_KEY_KP_Right:
      return Vector{1, 0};
    case GDK_KEY_Up:
    case GDK_KEY_KP_Up:
      return Vector{0, -1};
    case GDK_KEY_Down:
    case GDK_KEY_KP_Down:
      return Vector{0, 1};
    default:
      return {};
  }
}

}  // namespace zemblar
