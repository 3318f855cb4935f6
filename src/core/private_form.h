#pragma once

#include "core/object_numbers.h"
#include "core/yaml_io.h"

namespace zemblar {

class NamedForm;

/// While one exists, entries are written and read in a form for this program alone, for undo and
/// backup copies. It uses the numbers given to the constructor. Every kind of object has an entry,
/// also those that a layout file cannot hold. An entry has all settings of its object, some under
/// keys that no layout file has. Running state is in neither form: speeds, the present states of
/// functions and points, what a script waits for.
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
  NamedForm* former_named_;  // does not apply to entries within this form
};

/// Writes the key in the private form only.
template <typename T>
void write_private(YAML::Emitter& out, const char* key, const T& value) {
  if (PrivateForm::is_used()) out << YAML::Key << key << YAML::Value << value;
}

/// Reads the key in the private form; `value` stays if there is none.
template <typename T>
void read_private(const YAML::Node& node, const char* key, T& value) {
  if (PrivateForm::is_used()) read_key(node, key, value);
}

}  // namespace zemblar
