#pragma once

#include "simulator/trains/track_sensors.h"

namespace zemblar::simulator {

/// Fills the current layout, which is empty, with some objects of every kind, with settings, links
/// and diagrams.
void fill_at_random(Chance& chance, bool with_groups);

}  // namespace zemblar::simulator
