#pragma once

#include "core/object.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// A pointer to an Object that is not owned, and null once the object has ended.
///
/// For widgets: a panel may stand for a moment longer than what it shows.
template <typename T>
class ObjectRef {
 public:
  ObjectRef() = default;
  explicit ObjectRef(T* object) { reset(object); }
  ObjectRef(const ObjectRef&) = delete;
  ObjectRef& operator=(const ObjectRef&) = delete;

  void reset(T* object = nullptr) {
    deleted_.disconnect();
    object_ = object;
    if (!object) return;
    deleted_ = object->signal_deleted().connect([this] { object_ = nullptr; });
  }

  [[nodiscard]] T* get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
  ScopedConnection deleted_;
};

}  // namespace zemblar
