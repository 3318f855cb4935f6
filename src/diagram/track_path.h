#pragma once

#include <cairomm/context.h>

#include <span>
#include <vector>

#include "diagram/vector.h"

namespace zemblar {

class ViewNode;

/// A step of a path, from the previous node to this one.
struct PathStep {
  const ViewNode* node;
  bool straight = false;  ///< else a curve, shaped by the right handle of the previous node and the
                          ///< left one of this
};
using TrackPath = std::vector<PathStep>;

/// Draws several tracks together, so that all halos lie below all rails.
class TrackPaths {
 public:
  static constexpr double rail_width = 4.0;
  static constexpr double halo_width = 8.0;
  static constexpr double glow_width = 13.0;

  /// The bed below the rails. Sleepers are short black lines across the white halo, longer than its
  /// width: they mark a track also for users who cannot tell the colours of the rails apart.
  enum class Bed { none, halo, sleepers };

  /// Ignores a path with fewer than two nodes.
  void add_path(TrackPath path);
  /// Draws all paths in the context's colour and removes them.
  void stroke_paths(const Cairo::RefPtr<Cairo::Context>& context, Bed bed);
  /// Draws all paths in the context's colour, wider than any halo, and removes them.
  void stroke_glow(const Cairo::RefPtr<Cairo::Context>& context);

 private:
  void stroke_bed(const Cairo::RefPtr<Cairo::Context>& context, Bed bed) const;
  void stroke_all(const Cairo::RefPtr<Cairo::Context>& context, double width) const;

  std::vector<TrackPath> paths_;
};

/// Appends the track to the context's path.
void trace(const Cairo::RefPtr<Cairo::Context>& context, std::span<const PathStep> path);
/// Draws a line across the end of a track.
void draw_tick(const Cairo::RefPtr<Cairo::Context>& context, const Vector& position,
               const Vector& direction);

/// Draws the direction of travel of a train: a black arrowhead with a white rim, on the track.
void draw_travel_arrow(const Cairo::RefPtr<Cairo::Context>& context, const Vector& position,
                       const Vector& direction);

/// A place on a track and the direction of the track there.
struct TrackPlace {
  Vector pos;
  Vector dir;
};
/// The place on a step, straight or curved, at the parameter `share` between 0 (start) and 1 (end).
[[nodiscard]] TrackPlace place_on_step(const PathStep& from, const PathStep& to, double share);
/// The parameter at which a step is nearest to a place, kept a little away from both ends of the
/// step.
[[nodiscard]] double share_near(const PathStep& from, const PathStep& to, const Vector& place);
/// The middle of a path, counted in steps: on the middle step, or at the middle node.
[[nodiscard]] TrackPlace middle_of(const TrackPath& path);

/// Divides a curve into two that together have the same shape: the place of the new node, and the
/// lengths of all handles. On a very small curve `ViewNode` may lengthen handles to its shortest
/// length, which changes the shape a little.
struct DividedCurve {
  TrackPlace place;
  double start_handle;
  double before;  ///< handle of the place, towards the start
  double after;   ///< towards the end
  double end_handle;
};
/// `share` is the curve's parameter at the place, between 0 and 1.
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
  /// The intersection of both.
  [[nodiscard]] PixelBox intersected(const PixelBox& other) const;
  /// The box enlarged to whole pixels.
  [[nodiscard]] PixelBox whole() const;
};
/// A box around the path with `margin` on each side, in diagram units. It contains the handles of
/// curves, between which a curve always lies.
[[nodiscard]] PixelBox box_of(std::span<const PathStep> path, double margin);
/// The device pixels of a box in diagram units. The context must not rotate.
[[nodiscard]] PixelBox to_pixels(const Cairo::RefPtr<Cairo::Context>& context, PixelBox box);

}  // namespace zemblar
