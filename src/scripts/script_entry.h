#pragma once

#include <yaml-cpp/yaml.h>

#include <vector>

#include "core/object.h"
#include "core/yaml_io.h"  // else a line without it writes a pointer to an object as a bool
#include "scripts/script_ui.h"

namespace zemblar {

class Lok;

/// The element of a line's entry at a position. Throws YAML::TypedKeyNotFound when it is missing.
[[nodiscard]] YAML::Node element(const YAML::Node& entry, unsigned place);
/// True if the element is this word, such as "This" or "Any".
[[nodiscard]] bool is_word(const YAML::Node& element, const char* word);

/// Speed and unit, two elements from `place` on. Throws YAML::InvalidScalar for another unit.
[[nodiscard]] SpeedArg read_speed(const YAML::Node& entry, unsigned place);
void write_speed(YAML::Emitter& out, const SpeedArg& speed);
[[nodiscard]] Glib::ustring speed_text(const SpeedArg& speed);
/// Appends all objects of class T below `parent`, in the order of the tree.
template <typename T>
void collect(const Object& parent, std::vector<T*>& found) {
  for (auto* child : parent) {
    if (auto* object = dynamic_cast<T*>(child)) found.push_back(object);
    collect(*child, found);
  }
}

/// The locomotives of the current layout, in its order, followed by a separator if there are any.
[[nodiscard]] std::vector<ScriptChoice> lok_choices(
    const std::function<ScriptChoice(Lok*)>& make_choice);

}  // namespace zemblar
