#pragma once

#include <array>

#include "diagram/view_track.h"
#include "track/corners.h"

namespace zemblar {

/// The four nodes of a diagram object with two tracks. The directions of those on the left point
/// into the object, of those on the right out of it.
class ViewCorners {
 public:
  enum Corner { top_left, top_right, bottom_left, bottom_right };

  ViewLinkNode& operator[](Corner corner) { return nodes_[corner]; }
  [[nodiscard]] std::vector<ViewLinkNode*> all();
  /// The node for a link name of the block; null for another name.
  [[nodiscard]] ViewLinkNode* find(const std::string& name);

  /// Arranges the nodes around a place, with tracks that run to the right.
  void place(const Vector& place);
  void attach(Corners& links);
  void load(const YAML::Node& node);
  void save(YAML::Emitter& out) const;

 private:
  std::array<ViewLinkNode, 4> nodes_;
};

}  // namespace zemblar
