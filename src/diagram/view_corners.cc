#include "diagram/view_corners.h"

#include <algorithm>

namespace zemblar {
namespace {

// Distance from the place of a new object to its corners.
constexpr double half_width = 30.0;
constexpr double half_height = 10.0;

}  // namespace

std::vector<ViewLinkNode*> ViewCorners::all() {
  return {&nodes_[0], &nodes_[1], &nodes_[2], &nodes_[3]};
}

ViewLinkNode* ViewCorners::find(const std::string& name) {
  const auto found = std::ranges::find(Corners::names, name);
  return found == Corners::names.end()
             ? nullptr
             : &nodes_[static_cast<std::size_t>(found - Corners::names.begin())];
}

void ViewCorners::place(const Vector& place) {
  for (const auto corner : {top_left, top_right, bottom_left, bottom_right}) {
    const bool left = corner == top_left || corner == bottom_left;
    const bool top = corner == top_left || corner == top_right;
    nodes_[corner].pos =
        place + Vector{left ? -half_width : half_width, top ? -half_height : half_height};
    nodes_[corner].dir = {1, 0};
  }
}

void ViewCorners::attach(Corners& links) {
  const auto all = links.all();
  for (std::size_t i = 0; i < all.size(); ++i) nodes_[i].set_block_link(all[i]);
}

void ViewCorners::load(const YAML::Node& node) {
  for (std::size_t i = 0; i < nodes_.size(); ++i) load_node(node, Corners::names[i], nodes_[i]);
}

void ViewCorners::save(YAML::Emitter& out) const {
  for (std::size_t i = 0; i < nodes_.size(); ++i) save_node(out, Corners::names[i], nodes_[i]);
}

}  // namespace zemblar
