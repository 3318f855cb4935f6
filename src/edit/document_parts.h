#pragma once

#include <string>

#include "core/object_numbers.h"

namespace zemblar {

class View;
class ViewObj;

/// What steps name the parts of the document by. An object keeps its number when it ends and comes
/// back by an undo, as another one in the memory.
struct PartNumbers {
  ObjectNumbers objects;
  NumberTable<ViewObj> drawings;
};

/// How a part of the document is at one time.
struct PartState {
  bool exists = false;
  unsigned parent = 0;  ///< the number of what it stands in
  unsigned place = 0;   ///< among its siblings
  std::string entry;    ///< in the private form; that of a view is without its drawings

  bool operator==(const PartState&) const = default;
};

}  // namespace zemblar
