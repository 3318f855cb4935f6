#pragma once

#include <glibmm/object.h>
#include <glibmm/ustring.h>
#include <yaml-cpp/yaml.h>

#include <functional>
#include <optional>
#include <string>
#include <type_traits>

namespace zemblar {

class Object;

/// Reading and writing in the stream style, `node >> value` and `out << value`. A reader throws
/// YAML::InvalidScalar, with the node's place, for a value that it cannot use. No reader depends on
/// the locale.

YAML::Emitter& operator<<(YAML::Emitter& out, const Object& object);
/// Writes a reference: null, or the object's number in this file.
YAML::Emitter& operator<<(YAML::Emitter& out, const Object* object);
/// Deleted because in a class of the toolkit the name `Object` means Glib::Object, whose pointer
/// would be written as a bool.
YAML::Emitter& operator<<(YAML::Emitter& out, const Glib::Object* object) = delete;
YAML::Emitter& operator<<(YAML::Emitter& out, const Glib::ustring& text);

/// Reads a scalar; a null node is refused. Invalid UTF-8 is replaced.
void operator>>(const YAML::Node& node, Glib::ustring& text);
void operator>>(const YAML::Node& node, std::string& text);
/// "true" or "false", in the spellings that YAML 1.2 allows.
void operator>>(const YAML::Node& node, bool& value);
void operator>>(const YAML::Node& node, int& value);
/// Accepts decimal digits only: no sign, no other base.
void operator>>(const YAML::Node& node, unsigned& value);
/// Accepts finite numbers only.
void operator>>(const YAML::Node& node, double& value);

/// The shortest text that reads back as the same number, with a point in every locale.
[[nodiscard]] std::string shortest_text(double value);
[[nodiscard]] std::string shortest_text(float value);

/// The scalar's text; throws YAML::InvalidScalar for anything else.
const std::string& scalar_of(const YAML::Node& node);

/// The value of a key; throws YAML::TypedKeyNotFound for a missing one.
YAML::Node required(const YAML::Node& node, const char* key);

/// A whole number; no value for one beyond the range of an int.
[[nodiscard]] std::optional<int> read_fitting_int(const YAML::Node& node);

/// Writes arbitrary bytes: as text when all are printable ASCII, else as binary data (base64).
void write_bytes(YAML::Emitter& out, const std::string& bytes);
[[nodiscard]] std::string read_bytes(const YAML::Node& node);

/// Reads a reference that is not null. When everything has been read, the current layout calls
/// `assign` with the object that has this number, or with null when there is none. `assign` returns
/// true if it uses the object.
void resolve_later(const YAML::Node& node, std::function<bool(Object*)> assign);

/// Reads a reference. A null is stored at once. A number is looked up when the whole file has been
/// read; an unknown number, or an object of another class, leaves null. `target` must exist until
/// then: it is a member of the object being constructed, and a failed load drops the look-up
/// instead of running it.
template <typename T>
requires std::is_class_v<T>
void operator>>(const YAML::Node& node, T*& target) {
  target = nullptr;
  if (node.IsNull()) return;
  resolve_later(node, [&target](Object* object) {
    target = dynamic_cast<T*>(object);
    return target != nullptr;
  });
}

/// Reads the key; `value` stays if there is no such key.
template <typename T>
void read_key(const YAML::Node& node, const char* key, T& value) {
  if (const auto child = node[key]) child >> value;
}

/// The tag, given without its leading `!`, of an entry that a layout file cannot hold: the emitter
/// refuses the tag, and the file ends there. In the private form the tag is an ordinary one.
[[nodiscard]] YAML::_Tag unwritable_tag(const std::string& tag);

}  // namespace zemblar
