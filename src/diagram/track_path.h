#pragma once

#include <cairomm/context.h>

#include <span>
#include <vector>

#include "diagram/vector.h"

namespace zemblar {

class ViewNode;

/// A step of a path: to a node, from the one before it.
struct PathStep {
  const ViewNode* node;
  bool straight = false;  ///< otherwise a curve, bent by the handles that face each other
};
using TrackPath = std::vector<PathStep>;

/// Tracks to be drawn in one go: all halos lie below all rails.
class TrackPaths {
 public:
  static constexpr double rail_width = 4.0;
  static constexpr double halo_width = 8.0;
  static constexpr double glow_width = 13.0;

  /// The ground below the rails. Sleepers are short black lines across a white halo that reach out
  /// of it: a mark for those who do not tell the colours of rails.
  enum class Bed { none, halo, sleepers };

  /// A path of fewer than two nodes is none.
  void add_path(TrackPath path);
  /// In the context's colour. Forgets the paths.
  void stroke_paths(const Cairo::RefPtr<Cairo::Context>& context, Bed bed);
  /// In the context's colour, wider than any halo. Forgets the paths.
  void stroke_glow(const Cairo::RefPtr<Cairo::Context>& context);

 private:
  void stroke_bed(const Cairo::RefPtr<Cairo::Context>& context, Bed bed) const;
  void stroke_all(const Cairo::RefPtr<Cairo::Context>& context, double width) const;

  std::vector<TrackPath> paths_;
};

/// Makes it the context's path.
void trace(const Cairo::RefPtr<Cairo::Context>& context, std::span<const PathStep> path);
/// A line across the end of a track.
void draw_tick(const Cairo::RefPtr<Cairo::Context>& context, const Vector& position,
               const Vector& direction);

/// A train travels that way: a black arrowhead with a white rim, on the track.
void draw_travel_arrow(const Cairo::RefPtr<Cairo::Context>& context, const Vector& position,
                       const Vector& direction);

/// A place on a track and the direction of the track there.
struct TrackPlace {
  Vector pos;
  Vector dir;
};
/// The place of one step, straight or bent, at a share of it between 0 and 1.
[[nodiscard]] TrackPlace place_on_step(const PathStep& from, const PathStep& to, double share);
/// The share at which a step comes nearest to a place, a little away from the ends of the step.
[[nodiscard]] double share_near(const PathStep& from, const PathStep& to, const Vector& place);
/// Half-way along a path by its steps: on the middle step, or at the middle node.
[[nodiscard]] TrackPlace middle_of(const TrackPath& path);

/// Where a node divides a curve into two that together have its shape, and the lengths of the
/// handles for that. None is shorter than a handle may be, which only shows on a very small curve.
struct DividedCurve {
  TrackPlace place;
  double start_handle;
  double before;  ///< handle of the place, towards the start
  double after;   ///< towards the end
  double end_handle;
};
/// `share` is the part of the curve's parameter that lies before the place, between 0 and 1.
[[nodiscard]] DividedCurve divided(const PathStep& from, const PathStep& to, double share);

/// A rectangle, mostly in device pixels.
struct PixelBox {
  double left = 0;
  double top = 0;
  double right = 0;
  double bottom = 0;

  bool operator==(const PixelBox&) const = default;
  [[nodiscard]] bool empty() const { return right <= left || bottom <= top; }
  [[nodiscard]] Vector extent() const { return {right - left, bottom - top}; }
  [[nodiscard]] Vector middle() const { return {(left + right) * 0.5, (top + bottom) * 0.5}; }
  [[nodiscard]] bool meets(const PixelBox& other) const {
    return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
  }
  /// The smallest one around both.
  [[nodiscard]] PixelBox united(const PixelBox& other) const;
  /// What both cover.
  [[nodiscard]] PixelBox cut(const PixelBox& other) const;
  /// Grown to whole pixels.
  [[nodiscard]] PixelBox whole() const;
};
/// What the path can cover when it is drawn, with `margin` round it; all in diagram units. Room for
/// a curve is made by its handles.
[[nodiscard]] PixelBox box_of(std::span<const PathStep> path, double margin);
/// The device pixels of a box in diagram units. The context does not turn it.
[[nodiscard]] PixelBox to_pixels(const Cairo::RefPtr<Cairo::Context>& context, PixelBox box);

}  // namespace zemblar
