#pragma once

#include "core/object.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// A non-owning pointer to an Object, which becomes null when the object ends.
///
/// For widgets, because a panel may exist a little longer than the object it shows.
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
