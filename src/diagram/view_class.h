#pragma once

#include <string>
#include <vector>

#include "core/document_class.h"
#include "core/i18n.h"
#include "diagram/view_object.h"

namespace zemblar {

/// How the user adds a diagram object. Texts are given before translation.
struct ViewTool {
  unsigned place;     ///< in the tool bar, from 0
  const char* icon;   ///< its name; the objects that the class shows have it as well
  const char* label;  ///< of the button
  const char* name;   ///< in menus, with a mnemonic
  const char* add_new;
  const char* add_existing;
  const char* heading;  ///< above the objects of the layout that can be shown
  const char* how_to_make = N_("There is none yet. The tool itself makes a new one.");
  bool takes_existing = false;  ///< by a plain click
};

/// A class of diagram objects, registered by a static `ViewClass::Registration` in its source file.
struct ViewClass {
  std::string tag;  ///< of an entry of a view, with its leading `!`
  ViewObj* (*load)(const YAML::Node& node);
  ViewTool tool;
  Section section;    ///< of the objects that it shows
  Object* (*make)();  ///< a new object to show, with default values
  /// Draws an object, at the origin; the caller puts it into a view.
  ViewObj* (*draw)(Object& object);
  bool (*shows)(const Object& object);

  /// The class with this tag, or null.
  static const ViewClass* find(const std::string& tag);
  /// In the order of their tools.
  static const std::vector<ViewClass>& all();

  /// Adds a new object to the current layout.
  [[nodiscard]] Object& make_object() const;
  /// The toolkit's name of the tool's icon and label, such as "add-zone".
  [[nodiscard]] std::string stock_id() const;

  struct Registration {
    explicit Registration(const ViewClass& view_class);
  };
};

/// The registration of a class T that shows objects of a class Shown. T has a constructor from a
/// YAML node, and one from an object and a place.
template <typename T, typename Shown>
ViewClass view_class(const char* tag, Section section, const ViewTool& tool) {
  return {tag,
          [](const YAML::Node& node) -> ViewObj* { return new T(node); },
          tool,
          section,
          []() -> Object* { return new Shown; },
          [](Object& object) -> ViewObj* { return new T(dynamic_cast<Shown&>(object), {}); },
          [](const Object& object) { return dynamic_cast<const Shown*>(&object) != nullptr; }};
}

}  // namespace zemblar
