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

namespace {

/// The entry with this number in a list; an undefined node when the list has none.
YAML::Node entry_with(const YAML::Node& list, const std::string& number) {
  for (const auto& entry : list) {
    if (entry["id"].Scalar() == number) return entry;
  }
  return YAML::Node(YAML::NodeType::Undefined);
}

}  // namespace

void restore_children(Object& parent, const YAML::Node& from, const YAML::Node& to,
                      const std::function<void(const YAML::Node& entry, unsigned place)>& make) {
  for (const auto& entry : from) {
    auto* child = EntryChange::object_at<Object>(entry["id"]);
    const bool stays = entry_with(to, entry["id"].Scalar()).IsDefined();
    if (child && !stays && child->get_parent() == &parent) child->destroy();
  }
  unsigned place = 0;
  for (const auto& entry : to) {
    auto* child = EntryChange::object_at<Object>(entry["id"]);
    if (!child) {
      make(entry, place);
    } else if (const auto former = entry_with(from, entry["id"].Scalar()); former.IsDefined()) {
      child->restore({former, entry});
    }
    ++place;
  }
}

}  // namespace zemblar
