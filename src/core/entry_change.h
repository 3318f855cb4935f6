#pragma once

#include <yaml-cpp/yaml.h>

#include <string>

#include "core/layout.h"
#include "core/yaml_io.h"

namespace zemblar {

/// Two entries of one object, of which the later one is to hold. Made in the private form, where
/// the objects that entries refer to can be found.
class EntryChange {
 public:
  EntryChange(YAML::Node from, YAML::Node to) : from_(std::move(from)), to_(std::move(to)) {}

  /// Whether the key, with all below it, says something else.
  [[nodiscard]] bool differs(const char* key) const;
  /// What the later one has there.
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

}  // namespace zemblar
