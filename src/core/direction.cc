#include "core/direction.h"

#include <cassert>

#include "core/yaml_io.h"

namespace zemblar {

YAML::Emitter& operator<<(YAML::Emitter& out, Direction direction) {
  switch (direction) {
    case Direction::Forwards:
      return out << "Forwards";
    case Direction::Reverse:
      return out << "Reverse";
  }
  assert(false && "Invalid Direction");
  return out;
}

void operator>>(const YAML::Node& node, Direction& direction) {
  const auto& text = scalar_of(node);
  if (text != "Forwards" && text != "Reverse") throw YAML::InvalidScalar(node.Mark());
  direction = text == "Forwards" ? Direction::Forwards : Direction::Reverse;
}

}  // namespace zemblar
