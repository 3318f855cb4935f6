#pragma once

#include "core/object_numbers.h"
#include "core/yaml_io.h"

namespace zemblar {

/// While it lives, entries are written and read in a form that only this program sees, not that of
/// layout files: the numbers are those given here, and every kind of object has an entry, those
/// that a file cannot hold as well. An entry has all settings of its object, some of them under
/// keys that no file has. What runs is in no form: speeds, states in force, what a script waits
/// for.
class PrivateForm {
 public:
  explicit PrivateForm(ObjectNumbers& numbers);
  ~PrivateForm();
  PrivateForm(const PrivateForm&) = delete;
  PrivateForm& operator=(const PrivateForm&) = delete;

  [[nodiscard]] static bool is_used() { return depth_ != 0; }

 private:
  static inline unsigned depth_ = 0;
  ObjectNumbers* former_;
};

/// Writes a key of the private form alone.
template <typename T>
void write_private(YAML::Emitter& out, const char* key, const T& value) {
  if (PrivateForm::is_used()) out << YAML::Key << key << YAML::Value << value;
}

/// Reads such a key when it is there; otherwise the value stays.
template <typename T>
void read_private(const YAML::Node& node, const char* key, T& value) {
  if (PrivateForm::is_used()) read_key(node, key, value);
}

}  // namespace zemblar
