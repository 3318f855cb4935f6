#pragma once

#include <glibmm/ustring.h>

#include "runtime/timer.h"

namespace zemblar {

/// What the link between a device and its hardware is doing.
enum class LinkPhase {
  not_set_up,            ///< something has to be entered first, such as an address
  looking_for_hardware,  ///< nothing is plugged in that the device could use
  connecting,            ///< the hardware is known and has not been in service yet
  in_service,
  waiting_for_answer,  ///< in service or starting, and a command has had no answer for too long
  lost,                ///< was in service; the driver tries to get it back
};

/// The state of a device's link, as far as its driver knows it: panels, the status bar and tests
/// read this and nothing else.
struct LinkState {
  LinkPhase phase = LinkPhase::not_set_up;
  Clock::time_point since{};  ///< the moment at which the phase began
  Glib::ustring why{};        ///< a sentence for the person; empty when there is nothing to say
};

/// "in service" and so on, translated.
[[nodiscard]] Glib::ustring display_name(LinkPhase phase);

}  // namespace zemblar
