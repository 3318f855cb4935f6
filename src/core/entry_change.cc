#include "core/entry_change.h"

namespace zemblar {

bool EntryChange::differs(const char* key) const {
  const auto was = from_[key];
  const auto is = to_[key];
  if (!was || !is) return static_cast<bool>(was) != static_cast<bool>(is);
  return YAML::Dump(was) != YAML::Dump(is);
}

Object* EntryChange::object_of(const YAML::Node& node) {
  if (!node || node.IsNull()) return nullptr;
  unsigned number = 0;
  node >> number;
  return Layout::get().find_id(number);
}

}  // namespace zemblar
