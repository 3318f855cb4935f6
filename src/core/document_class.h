#pragma once

#include <map>
#include <string>

namespace YAML {
class Node;
}

namespace zemblar {

class Object;

/// The six containers directly under a layout, in the order in which a new document makes them
/// and in which their children stand in a layout file.
enum class Section { views, locomotives, points, blocks, devices, scripts };
inline constexpr int section_count = 6;

/// A class whose objects stand directly under a toplevel.
///
/// The file of the class registers it by a static `DocumentClass::Registration`; `Layout` and
/// `Object::create` need no knowledge of the class itself.
struct DocumentClass {
  std::string tag;  ///< in a layout file, with its leading `!`
  Section section;  ///< where Object::create puts it
  Object* (*load)(const YAML::Node&) = nullptr;
  Object* (*make)() = nullptr;  ///< a new one with default values
  bool in_files = true;         ///< else entries are found in the private form alone
  /// The translated text of the menu in which the user makes one; null for a class without.
  const char* (*menu_text)() = nullptr;

  struct Registration {
    explicit Registration(const DocumentClass& document_class);
  };
};

/// The registration of a class T that has a default constructor and one from a YAML node.
template <typename T>
DocumentClass document_class(const char* tag, Section section,
                             const char* (*menu_text)() = nullptr) {
  return {.tag = tag,
          .section = section,
          .load = [](const YAML::Node& node) -> Object* { return new T(node); },
          .make = []() -> Object* { return new T; },
          .menu_text = menu_text};
}

/// The same for a class that has no entry in a layout file.
template <typename T>
DocumentClass private_class(const char* tag, Section section,
                            const char* (*menu_text)() = nullptr) {
  auto without_entry = document_class<T>(tag, section, menu_text);
  without_entry.in_files = false;
  return without_entry;
}

/// The class with this tag; null for an unknown tag, and outside the private form for a class that
/// has no entry in a layout file.
const DocumentClass* find_document_class(const std::string& tag);
/// All registered classes by tag.
[[nodiscard]] std::map<std::string, DocumentClass> document_classes();

/// Lets objects of class T be dropped on a toplevel: define one static object in the source file of
/// the class.
struct ToplevelAccepts {
  ToplevelAccepts(Section section, bool (*is_instance)(const Object*));
};
template <typename T>
ToplevelAccepts toplevel_accepts_class(Section section) {
  return {section, [](const Object* object) { return dynamic_cast<const T*>(object) != nullptr; }};
}
[[nodiscard]] bool toplevel_accepts(Section section, const Object* object);

}  // namespace zemblar
