#pragma once

#include <yaml-cpp/yaml.h>

#include <functional>
#include <string>

#include "core/layout.h"
#include "core/yaml_io.h"

namespace zemblar {

/// Two entries of one object, of which the later one is to hold. Made in the private form, where
/// the objects that entries refer to can be found.
class EntryChange {
 public:
  EntryChange(const YAML::Node& from, const YAML::Node& to) : from_(from), to_(to) {}

  /// Whether the key, with all below it, says something else.
  [[nodiscard]] bool differs(const char* key) const;
  /// The later one.
  [[nodiscard]] const YAML::Node& entry() const { return to_; }
  [[nodiscard]] const YAML::Node& former() const { return from_; }
  /// What it has there.
  [[nodiscard]] YAML::Node at(const char* key) const { return to_[key]; }
  /// The same change of a part of both.
  [[nodiscard]] EntryChange below(const char* key) const { return {from_[key], to_[key]}; }

  /// Calls `set` with the value if it differs.
  template <typename T, typename Set>
  void read(const char* key, Set&& set) const {
    if (!differs(key) || !to_[key]) return;
    T value{};
    to_[key] >> value;
    set(value);
  }
  /// The same for a reference; null for none, and for one that does not hold any more.
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

/// Makes the children of `parent` those that the later one of two lists of entries has: `make` puts
/// one that is missing at its place, the others are restored. Those not in the list end before, so
/// that their names are free.
void restore_children(Object& parent, const YAML::Node& from, const YAML::Node& to,
                      const std::function<void(const YAML::Node& entry, unsigned place)>& make);

}  // namespace zemblar
