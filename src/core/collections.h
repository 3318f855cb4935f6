#pragma once

#include <sigc++/signal.h>

#include <set>
#include <vector>

#include "core/object.h"

namespace zemblar {

/// What a MemberSet collects.
enum class MemberKind { block, point };

/// All objects of one kind in a layout, at any depth. Not in the tree and not saved.
///
/// An object joins when the layout announces it and leaves when it is deleted. Its changes are
/// relayed. The order of the set is that of addresses: nothing visible may depend on it.
class MemberSet : public Object {
 public:
  MemberSet(const char* name, MemberKind kind, sigc::signal<void, Object*>& object_added);

  [[nodiscard]] const std::set<Object*>& members() const { return members_; }

  /// A member's own change signal, and a member's end: occupancy for blocks, the state for points.
  sigc::signal<void>& signal_changed() { return signal_changed_; }
  /// Blocks only: the locomotive in a member changed.
  sigc::signal<void>& signal_lok_changed() { return signal_lok_changed_; }

  /// How objects of a class join a set; a static object in the file of the class. `relay` connects
  /// the member's signals to those of the set.
  struct Membership {
    Membership(MemberKind kind, bool (*is_member)(const Object*),
               void (*relay)(Object& member, MemberSet& set));
  };

 private:
  void take(Object* object);

  MemberKind kind_;
  std::set<Object*> members_;
  sigc::signal<void> signal_changed_;
  sigc::signal<void> signal_lok_changed_;
};

/// Stands for all locomotives wherever a group is expected. It holds no set.
class AllLoks : public Object {
 public:
  AllLoks();
};

}  // namespace zemblar
