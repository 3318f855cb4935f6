#pragma once

#include <array>

#include "diagram/view_track.h"
#include "track/corners.h"

namespace zemblar {

/// The four nodes of an object through which two tracks run. Those on the left point into the
/// object, those on the right out of it.
class ViewCorners {
 public:
  enum Corner { top_left, top_right, bottom_left, bottom_right };

  ViewLinkNode& operator[](Corner corner) { return nodes_[corner]; }
  [[nodiscard]] std::vector<ViewLinkNode*> all();
  /// By the names of the block's links; null for another one.
  [[nodiscard]] ViewLinkNode* find(const std::string& name);

  /// Round a place, with tracks that run to the right.
  void place(const Vector& place);
  void attach(Corners& links);
  void load(const YAML::Node& node);
  void save(YAML::Emitter& out) const;

 private:
  std::array<ViewLinkNode, 4> nodes_;
};

}  // namespace zemblar
