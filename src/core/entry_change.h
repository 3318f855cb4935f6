#pragma once

#include <yaml-cpp/yaml.h>

#include <functional>
#include <string>

#include "core/layout.h"
#include "core/yaml_io.h"

namespace zemblar {

/// The difference between two saved entries of one object; Object::restore applies the later entry.
/// Both are in the private form, whose numbers find the objects that the entries refer to.
class EntryChange {
 public:
  EntryChange(const YAML::Node& from, const YAML::Node& to) : from_(from), to_(to) {}

  /// True if the values of the key, with all below them, differ.
  [[nodiscard]] bool differs(const char* key) const;
  /// The later entry.
  [[nodiscard]] const YAML::Node& entry() const { return to_; }
  [[nodiscard]] const YAML::Node& former() const { return from_; }
  /// The value of the key in the later entry.
  [[nodiscard]] YAML::Node at(const char* key) const { return to_[key]; }
  /// The difference between the two values of the key.
  [[nodiscard]] EntryChange below(const char* key) const { return {from_[key], to_[key]}; }

  /// Calls `set` with the later value if the two differ.
  template <typename T, typename Set>
  void read(const char* key, Set&& set) const {
    if (!differs(key) || !to_[key]) return;
    T value{};
    to_[key] >> value;
    set(value);
  }
  /// The same for a reference. `set` gets null when the later entry has no reference, or its object
  /// does not exist any more.
  template <typename T, typename Set>
  void read_reference(const char* key, Set&& set) const {
    if (differs(key)) set(object_at<T>(to_[key]));
  }

  template <typename T>
  [[nodiscard]] static T* object_at(const YAML::Node& node) {
    return dynamic_cast<T*>(object_of(node));
  }

 private:
  [[nodiscard]] static Object* object_of(const YAML::Node& node);

  YAML::Node from_;
  YAML::Node to_;
};

/// Makes the children of `parent` equal to the later list of entries, `to`. Children that are not
/// in the list are destroyed first, so that their names are free. `make` creates a missing child at
/// `place`; the other children are restored.
void restore_children(Object& parent, const YAML::Node& from, const YAML::Node& to,
                      const std::function<void(const YAML::Node& entry, unsigned place)>& make);

}  // namespace zemblar
