#include "diagram/track_path.h"

#include <algorithm>
#include <limits>

#include "diagram/view_node.h"

namespace zemblar {
namespace {

constexpr double half_tick = 6.0;
constexpr double tick_width = 2.0;
constexpr double half_arrow = 7.0;
constexpr double arrow_rim = 3.0;
constexpr double sleeper_width = 10.0;  // across the track

/// The four control points of the curve of a step.
struct Curve {
  Vector start, first, second, end;
};

Curve curve_to(const PathStep& from, const PathStep& to) {
  return {from.node->pos, from.node->right_point(), to.node->left_point(), to.node->pos};
}

}  // namespace

void TrackPaths::add_path(TrackPath path) {
  if (path.size() >= 2) paths_.push_back(std::move(path));
}

void TrackPaths::stroke_paths(const Cairo::RefPtr<Cairo::Context>& context, Bed bed) {
  context->set_line_join(Cairo::LINE_JOIN_ROUND);
  context->begin_new_path();
  if (bed != Bed::none) stroke_bed(context, bed);
  stroke_all(context, rail_width);
  paths_.clear();
}

void TrackPaths::stroke_bed(const Cairo::RefPtr<Cairo::Context>& context, Bed bed) const {
  context->save();
  context->set_source_rgb(1, 1, 1);
  stroke_all(context, halo_width);
  if (bed == Bed::sleepers) {
    context->set_source_rgb(0, 0, 0);
    std::vector<double> lengths{2.0, 6.0};  // along the track: a sleeper, and the gap between two
    context->set_dash(lengths, 0);
    stroke_all(context, sleeper_width);
  }
  context->restore();
}

void TrackPaths::stroke_glow(const Cairo::RefPtr<Cairo::Context>& context) {
  context->begin_new_path();
  stroke_all(context, glow_width);
  paths_.clear();
}

void TrackPaths::stroke_all(const Cairo::RefPtr<Cairo::Context>& context, double width) const {
  context->set_line_width(width);
  for (const auto& path : paths_) {
    // A single straight line has no joins. Without round joins cairo fills it as a rectangle, which
    // is faster.
    const bool has_joins = path.size() > 2 || !path.back().straight;
    context->set_line_join(has_joins ? Cairo::LINE_JOIN_ROUND : Cairo::LINE_JOIN_MITER);
    trace(context, path);
    context->stroke();
  }
  context->set_line_join(Cairo::LINE_JOIN_ROUND);
}

void trace(const Cairo::RefPtr<Cairo::Context>& context, std::span<const PathStep> path) {
  context->move_to(path.front().node->pos.x, path.front().node->pos.y);
  for (std::size_t i = 1; i < path.size(); ++i) {
    const auto curve = curve_to(path[i - 1], path[i]);
    if (path[i].straight) {
      context->line_to(curve.end.x, curve.end.y);
    } else {
      context->curve_to(curve.first.x, curve.first.y, curve.second.x, curve.second.y, curve.end.x,
                        curve.end.y);
    }
  }
}

void draw_tick(const Cairo::RefPtr<Cairo::Context>& context, const Vector& position,
               const Vector& direction) {
  const auto across = direction.normal() * half_tick;
  context->begin_new_path();
  context->move_to(position.x - across.x, position.y - across.y);
  context->line_to(position.x + across.x, position.y + across.y);
  context->set_source_rgb(0, 0, 0);
  context->set_line_width(tick_width);
  context->stroke();
}

void draw_travel_arrow(const Cairo::RefPtr<Cairo::Context>& context, const Vector& position,
                       const Vector& direction) {
  const auto tip = position + direction * half_arrow;
  const auto tail = position - direction * half_arrow;
  const auto across = direction.normal() * half_arrow;
  context->begin_new_path();
  context->move_to(tip.x, tip.y);
  context->line_to(tail.x + across.x, tail.y + across.y);
  context->line_to(tail.x - across.x, tail.y - across.y);
  context->close_path();
  context->set_source_rgb(1, 1, 1);
  context->set_line_width(arrow_rim);
  context->stroke_preserve();
  context->set_source_rgb(0, 0, 0);
  context->fill();
}

// Uses de Casteljau's construction.
DividedCurve divided(const PathStep& from, const PathStep& to, double share) {
  const auto curve = curve_to(from, to);
  const auto between = [share](const Vector& a, const Vector& b) { return a + (b - a) * share; };
  const auto inner = between(curve.first, curve.second);
  const auto before = between(between(curve.start, curve.first), inner);
  const auto after = between(inner, between(curve.second, curve.end));
  const auto place = between(before, after);
  // At a cusp the curve has no direction, so the line from start to end gives it.
  const auto along = after == before ? curve.end - curve.start : after - before;
  return {{place, normalize(along)},
          from.node->right * share,
          (place - before).length(),
          (after - place).length(),
          to.node->left * (1 - share)};
}

double share_near(const PathStep& from, const PathStep& to, const Vector& place) {
  constexpr int parts = 64;
  constexpr int margin = 3;
  int nearest = parts / 2;
  double least = std::numeric_limits<double>::infinity();
  for (int i = margin; i <= parts - margin; ++i) {
    const double share = static_cast<double>(i) / parts;
    const double distance = (place_on_step(from, to, share).pos - place).length();
    if (distance >= least) continue;
    least = distance;
    nearest = i;
  }
  return static_cast<double>(nearest) / parts;
}

TrackPlace place_on_step(const PathStep& from, const PathStep& to, double share) {
  if (!to.straight) return divided(from, to, share).place;
  const auto way = to.node->pos - from.node->pos;
  return {from.node->pos + way * share, normalize(way)};
}

// If the path is a single curve, its direction is that of the line between the handle ends, unless
// these have passed one another.
TrackPlace middle_of(const TrackPath& path) {
  const auto steps = path.size() - 1;
  const auto half = steps / 2;
  if (steps % 2 != 0) {
    const auto middle = place_on_step(path[half], path[half + 1], 0.5);
    if (steps > 1 || path.back().straight) return middle;
    const auto curve = curve_to(path.front(), path.back());
    const auto inner = curve.second - curve.first;
    return {middle.pos, inner.dot(middle.dir) > 0 ? normalize(inner) : middle.dir};
  }
  const auto& node = *path[half].node;
  const auto chord = normalize(path[half + 1].node->pos - path[half - 1].node->pos);
  return {node.pos, node.dir == Vector{} ? chord : node.dir};
}

PixelBox PixelBox::united(const PixelBox& other) const {
  if (empty()) return other;
  if (other.empty()) return *this;
  return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
          std::max(bottom, other.bottom)};
}

PixelBox PixelBox::intersected(const PixelBox& other) const {
  return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
          std::min(bottom, other.bottom)};
}

PixelBox PixelBox::whole() const {
  return {std::floor(left), std::floor(top), std::ceil(right), std::ceil(bottom)};
}

// A curve lies within the convex hull of its four control points.
PixelBox box_of(std::span<const PathStep> path, double margin) {
  constexpr auto far = std::numeric_limits<double>::infinity();
  PixelBox box{far, far, -far, -far};
  const auto add = [&](const Vector& point) {
    box = {std::min(box.left, point.x), std::min(box.top, point.y), std::max(box.right, point.x),
           std::max(box.bottom, point.y)};
  };
  for (std::size_t i = 1; i < path.size(); ++i) {
    const auto curve = curve_to(path[i - 1], path[i]);
    add(curve.start);
    add(curve.end);
    if (path[i].straight) continue;
    add(curve.first);
    add(curve.second);
  }
  if (box.right < box.left) return {};
  return {box.left - margin, box.top - margin, box.right + margin, box.bottom + margin};
}

PixelBox to_pixels(const Cairo::RefPtr<Cairo::Context>& context, PixelBox box) {
  context->user_to_device(box.left, box.top);
  context->user_to_device(box.right, box.bottom);
  return box;
}

}  // namespace zemblar
