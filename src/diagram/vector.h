#pragma once

#include <cmath>

namespace YAML {
class Emitter;
class Node;
}  // namespace YAML

namespace zemblar {

/// A place or a direction in a diagram, in diagram units: x to the right, y downwards.
struct Vector {
  double x = 0;
  double y = 0;

  bool operator==(const Vector&) const = default;
  Vector operator+(const Vector& other) const { return {x + other.x, y + other.y}; }
  Vector operator-(const Vector& other) const { return {x - other.x, y - other.y}; }
  Vector operator-() const { return {-x, -y}; }
  Vector operator*(double factor) const { return {x * factor, y * factor}; }
  Vector operator/(double divisor) const { return {x / divisor, y / divisor}; }
  Vector& operator+=(const Vector& other) { return *this = *this + other; }

  [[nodiscard]] double dot(const Vector& other) const { return x * other.x + y * other.y; }
  [[nodiscard]] double length() const { return std::hypot(x, y); }
  /// Perpendicular vector, turned by a quarter to the left as seen on the screen.
  [[nodiscard]] Vector normal() const { return {y, -x}; }
  /// In radians, from the x axis towards the y axis.
  [[nodiscard]] double get_angle() const { return std::atan2(y, x); }
};

/// The vector with length 1. The zero vector, and one whose length is no finite number, give the
/// zero vector.
[[nodiscard]] Vector normalize(const Vector& vector);

/// The nearest place within `diagram_limit`: some ten times as far out as the largest table
/// reaches, and still within the number range of the graphics library at the highest zoom.
[[nodiscard]] Vector within_diagram(const Vector& place);
/// The largest distance from the origin, along each axis.
inline constexpr double diagram_limit = 500'000;

/// The nearest place on a grid with this step; with a step of 0, the place rounded to two decimals.
[[nodiscard]] Vector on_grid(const Vector& place, double step);

/// A flow sequence of two finite numbers. Reading another count throws
/// YAML::RepresentationException "Vector requires precisely 2 values".
YAML::Emitter& operator<<(YAML::Emitter& out, const Vector& vector);
void operator>>(const YAML::Node& node, Vector& vector);

}  // namespace zemblar
