#pragma once

#include <gdkmm/color.h>

namespace YAML {
class Emitter;
class Node;
}  // namespace YAML

namespace zemblar {

/// Writes a colour as in a layout file: "#rrggbb", the high bytes of the three channels.
YAML::Emitter& operator<<(YAML::Emitter& out, const Gdk::Color& colour);
/// Reads any colour that the toolkit can parse, including names; throws YAML::InvalidScalar
/// otherwise.
void operator>>(const YAML::Node& node, Gdk::Color& colour);

}  // namespace zemblar
