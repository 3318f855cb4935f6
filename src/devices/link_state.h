#pragma once

#include <glibmm/ustring.h>

#include "runtime/timer.h"

namespace zemblar {

/// The phase of the link between a device and its hardware.
enum class LinkPhase {
  not_set_up,            ///< a setting is missing, such as an address
  looking_for_hardware,  ///< no hardware is plugged in that the device could use
  connecting,            ///< the hardware is known and has not been in service yet
  in_service,
  waiting_for_answer,  ///< in service or starting, and a command has had no answer for too long
  lost,                ///< was in service; the driver tries to get it back
};

/// The state of a device's link, as known to its driver; the only source for panels, the status bar
/// and tests.
struct LinkState {
  LinkPhase phase = LinkPhase::not_set_up;
  Clock::time_point since{};  ///< the moment at which the phase began
  Glib::ustring why{};        ///< a sentence for the user; may be empty
};

/// "in service" and so on, translated.
[[nodiscard]] Glib::ustring display_name(LinkPhase phase);

}  // namespace zemblar
