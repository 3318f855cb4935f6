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

/// Reading and writing in the stream style, `node >> value` and `out << value`. All readers refuse
/// what they cannot use with YAML::InvalidScalar at the node's place; none of them looks at the
/// locale.

YAML::Emitter& operator<<(YAML::Emitter& out, const Object& object);
/// A reference: null, or the target's number in this file.
YAML::Emitter& operator<<(YAML::Emitter& out, const Object* object);
/// In classes of the toolkit's `Object` alone names that one, and would be written as a bool.
YAML::Emitter& operator<<(YAML::Emitter& out, const Glib::Object* object) = delete;
YAML::Emitter& operator<<(YAML::Emitter& out, const Glib::ustring& text);

/// A scalar; a null is none. Bytes that are no UTF-8 are replaced.
void operator>>(const YAML::Node& node, Glib::ustring& text);
void operator>>(const YAML::Node& node, std::string& text);
/// "true" or "false", in the spellings that YAML 1.2 allows.
void operator>>(const YAML::Node& node, bool& value);
void operator>>(const YAML::Node& node, int& value);
/// Decimal digits only: no sign, no other base.
void operator>>(const YAML::Node& node, unsigned& value);
/// Finite numbers only.
void operator>>(const YAML::Node& node, double& value);

/// The shortest text that reads back as the same number, with a point in every locale.
[[nodiscard]] std::string shortest_text(double value);
[[nodiscard]] std::string shortest_text(float value);

/// The scalar's text; throws YAML::InvalidScalar for anything else.
const std::string& scalar_of(const YAML::Node& node);

/// The value of a key; throws YAML::TypedKeyNotFound for a missing one.
YAML::Node required(const YAML::Node& node, const char* key);

/// A whole number; none for one beyond the range of an int.
[[nodiscard]] std::optional<int> read_fitting_int(const YAML::Node& node);

/// Bytes of any kind: as a text when all are printable ASCII, else as binary data (base64).
void write_bytes(YAML::Emitter& out, const std::string& bytes);
[[nodiscard]] std::string read_bytes(const YAML::Node& node);

/// Asks the current layout to call `assign` with the object of that number, or with null when the
/// file has none, once everything has been read. `assign` says whether it took the object.
void resolve_later(unsigned id, std::function<bool(Object*)> assign);

/// Reads a reference. A null is stored at once; a number is looked up when the whole file has been
/// read, and an unknown one, or an object of another class, leaves null. `target` must stay in its
/// place until then: it is a member of an object under construction, and a load that fails drops
/// the look-up instead of running it.
template <typename T>
requires std::is_class_v<T>
void operator>>(const YAML::Node& node, T*& target) {
  target = nullptr;
  if (node.IsNull()) return;
  unsigned id = 0;
  node >> id;
  resolve_later(id, [&target](Object* object) {
    target = dynamic_cast<T*>(object);
    return target != nullptr;
  });
}

/// Reads the key when it is there; otherwise the value stays.
template <typename T>
void read_key(const YAML::Node& node, const char* key, T& value) {
  if (const auto child = node[key]) child >> value;
}

/// The tag of an entry that a layout file cannot hold: the emitter refuses it, and the file ends
/// there. In the private form it is a tag like others. Without the leading `!`.
[[nodiscard]] YAML::_Tag unwritable_tag(const std::string& tag);

}  // namespace zemblar
