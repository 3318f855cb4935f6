#pragma once

#include <string>
#include <string_view>

#include "simulator/stations/liusb_interface.h"

namespace zemblar::simulator {

/// Runs a command that controls the faults of a LI-USB, and returns the answer; `help` lists the
/// commands. Throws std::invalid_argument, with a text for the user, if the line is no command.
std::string run_liusb_command(LiUsbInterface& liusb, std::string_view line);

}  // namespace zemblar::simulator
