#pragma once

#include <chrono>

#include "guard/stop_order.h"

namespace zemblar::guard {

/// How long a station is told to switch its track power off that does not confirm it.
inline constexpr std::chrono::seconds patience{10};

/// Switches the track power of a station off and waits until the station has confirmed it; tries
/// again until `limit` is over. True when it has confirmed. Blocks the calling thread.
bool stop_station(const StopOrder& order, std::chrono::milliseconds limit = patience);

}  // namespace zemblar::guard
