#pragma once

#include <string>

#include "diagram/view_object.h"

namespace zemblar {

/// A class of diagram objects: a static `ViewClass::Registration` in its file is all that views
/// need to know of it.
struct ViewClass {
  std::string tag;  ///< of an entry of a view, with its leading `!`
  ViewObj* (*load)(const YAML::Node& node);

  /// Null for an unknown tag.
  static const ViewClass* find(const std::string& tag);

  struct Registration {
    explicit Registration(const ViewClass& view_class);
  };
};

/// The registration of a class that is made from its entry.
template <typename T>
ViewClass view_class(const char* tag) {
  return {tag, [](const YAML::Node& node) -> ViewObj* { return new T(node); }};
}

}  // namespace zemblar
