#pragma once

#include <string>
#include <vector>

#include "track/block.h"
#include "track/corners.h"

namespace zemblar::test {

/// The names that the ends of a block can have. Not every kind of block has each of them.
inline std::vector<std::string> link_names(const Block& block) {
  std::vector<std::string> names{"left", "right", "common"};
  names.insert(names.end(), Corners::names.begin(), Corners::names.end());
  for (const auto* child : block) names.push_back("state:" + child->get_name().raw());
  return names;
}

}  // namespace zemblar::test
