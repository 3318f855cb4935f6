#include "track/corners.h"

namespace zemblar {

BlockLink* Corners::find(const std::string& name) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (name == names[i]) return all()[i];
  }
  return nullptr;
}

std::string Corners::name_of(const BlockLink* link) const {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (link == all()[i]) return names[i];
  }
  return {};
}

}  // namespace zemblar
