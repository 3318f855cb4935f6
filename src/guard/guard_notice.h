#pragma once

#include <vector>

#include "guard/station_guard.h"

namespace zemblar::guard {

/// Tells the user what the guard has done and why, in a notification of the desktop and in
/// `zemblar/guard.log` in the user's state directory. Does nothing where neither is possible.
void report(End end, const std::vector<Outcome>& outcomes);

}  // namespace zemblar::guard
