#pragma once

#include <string>

#include "diagram/vector.h"

namespace YAML {
class Emitter;
class Node;
}  // namespace YAML

namespace zemblar {

/// Which side of a picture lies at its place.
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

/// From the place to the left upper corner of a picture of that size, in whole pixels.
[[nodiscard]] Vector anchor_offset(Anchor anchor, double width, double height);

/// As in a layout file: "Top Left".
[[nodiscard]] const char* anchor_name(Anchor anchor);
/// For a person.
[[nodiscard]] std::string display_name(Anchor anchor);

YAML::Emitter& operator<<(YAML::Emitter& out, Anchor anchor);
/// Throws YAML::InvalidScalar for any other text.
void operator>>(const YAML::Node& node, Anchor& anchor);

}  // namespace zemblar
