#pragma once

#include <glibmm/object.h>
#include <glibmm/propertyproxy.h>

#include <optional>
#include <unordered_set>
#include <utility>

#include "core/layout.h"
#include "core/property.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// Counts the objects of class T, at any depth of the current layout, as they come and go.
template <typename T>
class ObjectCount {
 public:
  static ObjectCount& get() {
    static auto* the_count = new ObjectCount;  // never destroyed: layouts are ended at exit
    return *the_count;
  }

  [[nodiscard]] unsigned count() {
    if (!layout_) follow_current();
    if (!announced_none_) announced_none_ = members_.empty();
    return static_cast<unsigned>(members_.size());
  }
  /// Emitted when the first object comes or the last one goes.
  sigc::signal<void>& signal_none_changed() { return signal_none_changed_; }

 private:
  ObjectCount() {
    Layout::signal_replaced().connect([this] {
      follow_current();
      notify();
    });
  }

  // A call of `count` may have switched to the new layout before the observers are notified.
  void notify() {
    const bool none = members_.empty();
    if (std::exchange(announced_none_, none) != none) signal_none_changed_.emit();
  }

  void follow_current() {
    layout_ = &Layout::get();
    members_.clear();
    count_below(*layout_);
    added_ = layout_->signal_object_added().connect([this](Object* object) {
      if (dynamic_cast<T*>(object) && members_.insert(object).second) notify();
    });
    removed_ = layout_->signal_object_removed().connect([this](Object* object) {
      if (members_.erase(object)) notify();
    });
    deleted_ = layout_->signal_deleted().connect([this] { layout_ = nullptr; });
  }

  void count_below(const Object& parent) {
    for (auto* child : parent) {
      if (dynamic_cast<T*>(child)) members_.insert(child);
      count_below(*child);
    }
  }

  Layout* layout_ = nullptr;  // null before the first `count`, and after the layout has ended
  // A set, because the removal of objects that were never in the layout is announced as well.
  std::unordered_set<Object*> members_;
  std::optional<bool> announced_none_;
  sigc::signal<void> signal_none_changed_;
  ScopedConnection added_;
  ScopedConnection removed_;
  ScopedConnection deleted_;
};

/// An observable pointer to an object of class T, cleared when the object ends. A second property
/// tells whether the current layout has no object of the class, at any depth.
template <typename T>
class ObjectHolder : public Glib::Object {
 protected:
  /// Names of the two properties, which live as long as the program.
  ObjectHolder(const char* held, const char* none) : held_name_(held), none_name_(none) {
    register_property<T*>(this, held, &ObjectHolder::get_held, &ObjectHolder::hold);
    register_property<bool>(this, none, &ObjectHolder::get_none);
    static_cast<void>(
        ObjectCount<T>::get().count());  // makes the count follow the layout from now on
    none_changed_ = ObjectCount<T>::get().signal_none_changed().connect(
        [this] { notify_property(*this, none_name_); });
  }

  [[nodiscard]] T* get_held() const { return held_; }
  void hold(T* object) {
    if (object == held_) return;
    held_ = object;
    deleted_.disconnect();
    if (object) deleted_ = object->signal_deleted().connect([this] { hold(nullptr); });
    notify_property(*this, held_name_);
  }
  [[nodiscard]] bool get_none() const { return ObjectCount<T>::get().count() == 0; }

 private:
  const char* held_name_;
  const char* none_name_;
  T* held_ = nullptr;
  ScopedConnection deleted_;
  ScopedConnection none_changed_;
};

}  // namespace zemblar
