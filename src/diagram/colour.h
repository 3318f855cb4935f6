#pragma once

#include <gdkmm/color.h>

namespace YAML {
class Emitter;
class Node;
}  // namespace YAML

namespace zemblar {

/// A colour in a layout file: "#rrggbb", the high bytes of the three channels.
YAML::Emitter& operator<<(YAML::Emitter& out, const Gdk::Color& colour);
/// Any colour that the toolkit can parse, names included; throws YAML::InvalidScalar otherwise.
void operator>>(const YAML::Node& node, Gdk::Color& colour);

}  // namespace zemblar
