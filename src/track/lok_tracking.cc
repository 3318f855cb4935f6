#include "locomotives/lok.h"

namespace zemblar {

// No block knows a locomotive yet, so there is nothing to follow.
void Lok::reconnect() {}

}  // namespace zemblar
