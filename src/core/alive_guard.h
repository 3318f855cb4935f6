#pragma once

#include <glibmm/object.h>

namespace zemblar {

/// Tells whether an object still exists after its signal handlers have run. Construct the guard
/// before the notification, in the same scope; it is true while the object exists.
class AliveGuard {
 public:
  explicit AliveGuard(Glib::ObjectBase& object) : gobject_(object.gobj()) {
    g_object_ref(gobject_);
  }
  ~AliveGuard() { g_object_unref(gobject_); }
  AliveGuard(const AliveGuard&) = delete;
  AliveGuard& operator=(const AliveGuard&) = delete;

  explicit operator bool() const {
    return Glib::ObjectBase::_get_current_wrapper(gobject_) != nullptr;
  }

 private:
  GObject* gobject_;
};

}  // namespace zemblar
