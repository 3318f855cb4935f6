#pragma once

#include "core/object.h"

namespace zemblar {

/// A folder in the tree of locomotives: holds locomotives and further groups.
///
/// Its tag contains another `!`, which the emitter refuses: a layout file ends at the first group
/// (see Layout).
class LokGroup : public Object {
 public:
  LokGroup();
  /// Reads the entries of `objects` by their tags "!lok" and "!lok-group". Any other tag throws
  /// YAML::InvalidScalar, as does a nesting deeper than any user would make.
  explicit LokGroup(const YAML::Node& node);
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  /// True for locomotives and groups, but neither for the group itself nor for a group that
  /// contains it.
  [[nodiscard]] bool can_contain(Object* child) const override;

 private:
  static Object* load_member(const YAML::Node& entry);
};

}  // namespace zemblar
