#include "ui/toolkit/made_object.h"

namespace zemblar {

sigc::signal<void, Object&>& signal_object_made() {
  static sigc::signal<void, Object&> signal;
  return signal;
}

}  // namespace zemblar
