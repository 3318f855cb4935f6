#include "diagram/vector.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>

#include "core/yaml_io.h"

namespace zemblar {

Vector normalize(const Vector& vector) {
  const double length = vector.length();
  return length > 0 && std::isfinite(length) ? vector / length : Vector{};
}

Vector within_diagram(const Vector& place) {
  return {std::clamp(place.x, -diagram_limit, diagram_limit),
          std::clamp(place.y, -diagram_limit, diagram_limit)};
}

Vector on_grid(const Vector& place, double step) {
  constexpr double parts = 100;
  const auto nearest = [step](double value) {
    return step > 0 ? std::round(value / step) * step : std::round(value * parts) / parts;
  };
  return {nearest(place.x), nearest(place.y)};
}

// Adding 0.0 turns a negative zero, which a reversed direction may have, into a plain one.
YAML::Emitter& operator<<(YAML::Emitter& out, const Vector& vector) {
  return out << YAML::Flow << YAML::BeginSeq << shortest_text(vector.x + 0.0)
             << shortest_text(vector.y + 0.0) << YAML::EndSeq;
}

void operator>>(const YAML::Node& node, Vector& vector) {
  if (!node.IsSequence() || node.size() != 2) {
    throw YAML::RepresentationException(node.Mark(), "Vector requires precisely 2 values");
  }
  node[0] >> vector.x;
  node[1] >> vector.y;
}

}  // namespace zemblar
