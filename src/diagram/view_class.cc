#include "diagram/view_class.h"

#include <algorithm>
#include <vector>

namespace zemblar {
namespace {

std::vector<ViewClass>& classes() {
  static std::vector<ViewClass> all;
  return all;
}

}  // namespace

const ViewClass* ViewClass::find(const std::string& tag) {
  const auto found = std::ranges::find(classes(), tag, &ViewClass::tag);
  return found == classes().end() ? nullptr : &*found;
}

ViewClass::Registration::Registration(const ViewClass& view_class) {
  classes().push_back(view_class);
}

}  // namespace zemblar
