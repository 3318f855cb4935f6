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
    if (!none_told_) none_told_ = members_.empty();
    return static_cast<unsigned>(members_.size());
  }
  /// From none to some, or back.
  sigc::signal<void>& signal_none_changed() { return signal_none_changed_; }

 private:
  ObjectCount() {
    Layout::signal_replaced().connect([this] {
      follow_current();
      tell();
    });
  }

  // A call of `count` may have switched to the new layout before observers are told.
  void tell() {
    const bool none = members_.empty();
    if (std::exchange(none_told_, none) != none) signal_none_changed_.emit();
  }

  void follow_current() {
    layout_ = &Layout::get();
    members_.clear();
    count_below(*layout_);
    added_ = layout_->signal_object_added().connect([this](Object* object) {
      if (dynamic_cast<T*>(object) && members_.insert(object).second) tell();
    });
    removed_ = layout_->signal_object_removed().connect([this](Object* object) {
      if (members_.erase(object)) tell();
    });
    deleted_ = layout_->signal_deleted().connect([this] { layout_ = nullptr; });
  }

  void count_below(const Object& parent) {
    for (auto* child : parent) {
      if (dynamic_cast<T*>(child)) members_.insert(child);
      count_below(*child);
    }
  }

  Layout* layout_ = nullptr;  // null until it is asked, and when the layout has ended
  // A set, because the removal of objects that were never in the layout is announced as well.
  std::unordered_set<Object*> members_;
  std::optional<bool> none_told_;
  sigc::signal<void> signal_none_changed_;
  ScopedConnection added_;
  ScopedConnection removed_;
  ScopedConnection deleted_;
};

/// An observable pointer to an object of class T, which clears itself when that ends. It also
/// tells whether there is any to choose, at any depth, in whichever layout is current.
template <typename T>
class ObjectHolder : public Glib::Object {
 protected:
  /// Names of the two properties, which live as long as the program.
  ObjectHolder(const char* held, const char* none) : held_name_(held), none_name_(none) {
    register_property<T*>(this, held, &ObjectHolder::get_held, &ObjectHolder::hold);
    register_property<bool>(this, none, &ObjectHolder::get_none);
    static_cast<void>(ObjectCount<T>::get().count());  // from now on it follows the layout
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
