#pragma once

#include <string>

#include "core/object_numbers.h"

namespace zemblar {

class View;
class ViewObj;

/// The numbers by which steps identify parts of the document. When an object has ended and undo
/// makes it again, the new object gets the same number.
struct PartNumbers {
  ObjectNumbers objects;
  NumberTable<ViewObj> drawings;
};

/// The state of a part of the document at one time.
struct PartState {
  bool exists = false;
  unsigned parent = 0;  ///< the number of its parent, or of its view
  unsigned place = 0;   ///< index among its siblings
  std::string entry;    ///< its entry in the private form; for a view without its diagram objects

  bool operator==(const PartState&) const = default;
};

}  // namespace zemblar
