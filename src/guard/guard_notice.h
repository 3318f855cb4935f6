#pragma once

#include <vector>

#include "guard/station_guard.h"

namespace zemblar::guard {

/// Tells the person what the guard has done and why: in a notification of the desktop, and in
/// `zemblar/guard.log` of the user's state directory. Neither may be possible.
void tell(End end, const std::vector<Outcome>& outcomes);

}  // namespace zemblar::guard
