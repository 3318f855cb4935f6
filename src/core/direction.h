#pragma once

#include <glibmm/value.h>

namespace YAML {
class Emitter;
class Node;
}  // namespace YAML

namespace zemblar {

/// Travel direction of a locomotive.
enum class Direction : int { Reverse = 0, Forwards = 1 };

[[nodiscard]] constexpr Direction opposite(Direction direction) {
  return direction == Direction::Forwards ? Direction::Reverse : Direction::Forwards;
}

/// "Forwards" or "Reverse"; reading anything else throws YAML::InvalidScalar, writing a value
/// outside the enumeration fails an assertion.
YAML::Emitter& operator<<(YAML::Emitter& out, Direction direction);
void operator>>(const YAML::Node& node, Direction& direction);

}  // namespace zemblar
