#pragma once

#include <string>

#include "simulator/trains/track_sensors.h"

namespace zemblar::simulator {

/// The text of a layout after some accidents: bits that fell over, lost and doubled pieces, edits
/// by hand that went wrong, and aliases that name what they should not.
[[nodiscard]] std::string damaged(std::string text, Chance& chance);

}  // namespace zemblar::simulator
