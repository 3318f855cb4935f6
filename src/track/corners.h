#pragma once

#include <array>
#include <string>

#include "track/block_link.h"

namespace zemblar {

/// The four ends of a block that two tracks run through.
struct Corners {
  explicit Corners(Block* block)
      : top_left(block), top_right(block), bottom_left(block), bottom_right(block) {}

  BlockLink top_left;
  BlockLink top_right;
  BlockLink bottom_left;
  BlockLink bottom_right;

  static constexpr std::array names{"top-left", "top-right", "bottom-left", "bottom-right"};
  /// The links in the order of `names`.
  [[nodiscard]] std::array<BlockLink*, 4> all() {
    return {&top_left, &top_right, &bottom_left, &bottom_right};
  }
  [[nodiscard]] std::array<const BlockLink*, 4> all() const {
    return {&top_left, &top_right, &bottom_left, &bottom_right};
  }

  /// The link with this name, or null.
  [[nodiscard]] BlockLink* find(const std::string& name);
  /// The name of a link; empty for another link.
  [[nodiscard]] std::string name_of(const BlockLink* link) const;
};

}  // namespace zemblar
