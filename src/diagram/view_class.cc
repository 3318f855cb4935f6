#include "diagram/view_class.h"

#include <algorithm>
#include <vector>

#include "core/layout.h"
#include "core/toplevel.h"

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

const std::vector<ViewClass>& ViewClass::all() {
  return classes();
}

Object& ViewClass::make_object() const {
  return *Layout::get().get_toplevel(section).add(make());
}

std::string ViewClass::stock_id() const {
  return "add" + tag.substr(tag.find('-'));
}

ViewClass::Registration::Registration(const ViewClass& view_class) {
  const auto before = [&view_class](const ViewClass& other) {
    return other.tool.place < view_class.tool.place;
  };
  classes().insert(std::ranges::partition_point(classes(), before), view_class);
}

}  // namespace zemblar
