#pragma once

#include <sigc++/slot.h>

#include <chrono>
#include <functional>
#include <vector>

#include "runtime/scoped_connection.h"

namespace zemblar {

struct ScriptContext;

/// Suspends the run until `holds` returns true, the limit has passed (0 for none), or the run is
/// cancelled. A run that lasts as long as its condition does not wait after that: it is cancelled.
/// `connect` connects everything on which that depends to the slot that it is given; it
/// is called only if the run has to wait. `holds` must not end the run itself.
///
/// A change within a turn of block control counts when the turn is over, one within a ScriptTurn
/// after Script::round_delay. The command may have ended when the run has been cancelled.
void wait_until(
    ScriptContext& context, const std::function<bool()>& holds,
    const std::function<std::vector<ScopedConnection>(const sigc::slot<void>&)>& connect,
    std::chrono::milliseconds limit);

}  // namespace zemblar
