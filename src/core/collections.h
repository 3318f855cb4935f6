#pragma once

#include <sigc++/signal.h>

#include <set>
#include <vector>

#include "core/object.h"

namespace zemblar {

/// The kind of object that a MemberSet collects.
enum class MemberKind { block, point };

/// All objects of one kind in a layout, at any depth. Not in the tree and not saved.
///
/// An object joins when the layout announces it and leaves when it is deleted. The set emits a
/// signal when a member changes. The set is ordered by memory address: nothing visible may depend
/// on the order.
class MemberSet : public Object {
 public:
  MemberSet(const char* name, MemberKind kind, sigc::signal<void, Object*>& object_added);

  [[nodiscard]] const std::set<Object*>& members() const { return members_; }

  /// The occupancy of a block or the state of a point has changed, or a member has ended.
  sigc::signal<void>& signal_changed() { return signal_changed_; }
  /// Blocks only: the locomotive in a member changed.
  sigc::signal<void>& signal_lok_changed() { return signal_lok_changed_; }

  /// Makes the objects of a class join a set: define one static object in the source file of the
  /// class. `relay` connects the member's signals to those of the set.
  struct Membership {
    Membership(MemberKind kind, bool (*is_member)(const Object*),
               void (*relay)(Object& member, MemberSet& set));
  };

 private:
  void join(Object* object);

  MemberKind kind_;
  std::set<Object*> members_;
  sigc::signal<void> signal_changed_;
  sigc::signal<void> signal_lok_changed_;
};

/// Stands for all locomotives wherever a group is expected. Unlike MemberSet it keeps no list.
class AllLoks : public Object {
 public:
  AllLoks();
};

}  // namespace zemblar
