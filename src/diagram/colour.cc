#include "diagram/colour.h"

#include <array>

#include "core/yaml_io.h"

namespace zemblar {

YAML::Emitter& operator<<(YAML::Emitter& out, const Gdk::Color& colour) {
  constexpr auto digits = "0123456789abcdef";
  std::string text = "#";
  for (const unsigned channel : {colour.get_red(), colour.get_green(), colour.get_blue()}) {
    text += digits[channel >> 12 & 15];
    text += digits[channel >> 8 & 15];
  }
  return out << text;
}

void operator>>(const YAML::Node& node, Gdk::Color& colour) {
  Gdk::Color read;
  if (read.set(scalar_of(node))) colour = read;
}

}  // namespace zemblar
