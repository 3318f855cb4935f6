#pragma once

#include <sigc++/signal.h>
#include <sigc++/trackable.h>

#include <utility>

#include "core/object.h"
#include "core/yaml_io.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// An object that a line of a script names, cleared when the object ends.
///
/// `signal_changing` is emitted before an ending object is cleared, so that undo can keep what the
/// line named.
template <typename T>
class ObjectSubject : public sigc::trackable {
 public:
  ObjectSubject() = default;
  ObjectSubject(const ObjectSubject&) = delete;
  ObjectSubject& operator=(const ObjectSubject&) = delete;

  [[nodiscard]] T* get() const { return object_; }
  void set(T* object) {
    if (object == object_) return;
    object_ = object;
    ended_.disconnect();
    if (object) ended_ = object->signal_deleted().connect([this] { forget(); });
  }

  /// Reads a reference, which `take_read` gives when the whole file has been read.
  void read(const YAML::Node& node) { node >> read_; }
  void take_read() { set(std::exchange(read_, nullptr)); }

  sigc::signal<void>& signal_changing() { return signal_changing_; }
  /// An object that ended has been cleared.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  void forget() {
    signal_changing_.emit();
    object_ = nullptr;
    const auto signal = signal_changed_;  // a copy, since a handler may end the line
    signal.emit();
  }

  T* object_ = nullptr;
  T* read_ = nullptr;
  sigc::signal<void> signal_changing_;
  sigc::signal<void> signal_changed_;
  ScopedConnection ended_;
};

}  // namespace zemblar
