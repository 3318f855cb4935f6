#include "devices/hw_list.h"

namespace zemblar {

HWList& HWList::get() {
  static HWList list;
  return list;
}

void HWList::refresh() {}

}  // namespace zemblar
