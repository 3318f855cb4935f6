#pragma once

#include <string>
#include <string_view>

#include "simulator/stations/liusb_interface.h"

namespace zemblar::simulator {

/// Carries out what a person types to make a LI-USB misbehave, and returns the answer; `help` lists
/// the commands. Throws std::invalid_argument, with a text for the person, when the line makes no
/// sense.
std::string run_liusb_command(LiUsbInterface& liusb, std::string_view line);

}  // namespace zemblar::simulator
