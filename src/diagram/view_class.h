#pragma once

#include <string>

#include "diagram/view_object.h"

namespace zemblar {

/// A class of diagram objects, registered by a static `ViewClass::Registration` in its source file.
struct ViewClass {
  std::string tag;  ///< of an entry of a view, with its leading `!`
  ViewObj* (*load)(const YAML::Node& node);

  /// The class with this tag, or null.
  static const ViewClass* find(const std::string& tag);

  struct Registration {
    explicit Registration(const ViewClass& view_class);
  };
};

/// The registration of a class T with a constructor from a YAML node.
template <typename T>
ViewClass view_class(const char* tag) {
  return {tag, [](const YAML::Node& node) -> ViewObj* { return new T(node); }};
}

}  // namespace zemblar
