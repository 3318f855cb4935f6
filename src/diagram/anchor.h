#pragma once

#include <string>

#include "diagram/vector.h"

namespace YAML {
class Emitter;
class Node;
}  // namespace YAML

namespace zemblar {

/// The side, corner or centre of a picture that lies at the object's place.
enum class Anchor : int {
  Top,
  Left,
  Right,
  Bottom,
  Centre,
  TopLeft,
  TopRight,
  BottomLeft,
  BottomRight
};
inline constexpr int anchor_count = 9;

/// Offset from the place to the top left corner of a picture of this size, in whole pixels.
[[nodiscard]] Vector anchor_offset(Anchor anchor, double width, double height);

/// The name in a layout file, such as "Top Left".
[[nodiscard]] const char* anchor_name(Anchor anchor);
/// The name shown to the user, translated.
[[nodiscard]] std::string display_name(Anchor anchor);

YAML::Emitter& operator<<(YAML::Emitter& out, Anchor anchor);
/// Throws YAML::InvalidScalar for any other text.
void operator>>(const YAML::Node& node, Anchor& anchor);

}  // namespace zemblar
