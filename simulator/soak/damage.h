#pragma once

#include <string>

#include "simulator/trains/track_sensors.h"

namespace zemblar::simulator {

/// The text of a layout with random damage: flipped bits, lost and doubled pieces, wrong edits by
/// hand, and wrong aliases.
[[nodiscard]] std::string damaged(std::string text, Chance& chance);

}  // namespace zemblar::simulator
