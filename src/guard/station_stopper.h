#pragma once

#include <chrono>

#include "guard/stop_order.h"

namespace zemblar::guard {

/// How long the order is repeated to a station that does not confirm it.
inline constexpr std::chrono::seconds longest_stop{10};

/// Switches the track power of a station off and waits for the station's confirmation; repeats the
/// order until `limit` has passed. True when the station has confirmed. Blocks the calling thread.
bool stop_station(const StopOrder& order, std::chrono::milliseconds limit = longest_stop);

}  // namespace zemblar::guard
