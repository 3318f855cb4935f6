#pragma once

#include <glibmm/ustring.h>

#include <vector>

namespace zemblar {

class Lok;
class Object;
class Zone;

// Sentences for the user about the condition of locomotives. No signal announces a change: widgets
// ask again at Layout::signal_pulse.

/// "Held: East Curve is taken by Local 24"; empty without the brake.
///
/// Block control sets the brake before a block that another locomotive holds, and when a change of
/// the points ahead makes the route end or lead to an occupied block. The sentence describes the
/// block ahead as it is now. If that is free, the operator must have set the brake.
[[nodiscard]] Glib::ustring hold_sentence(const Lok& lok);

/// The reason why the hardware does not carry out the locomotive's commands: they are switched off,
/// no station is in service, a station is lost, cannot address it or does not answer, or the track
/// power is off. Empty without a reason.
[[nodiscard]] Glib::ustring reach_sentence(const Lok& lok);

/// The reason of `reach_sentence`, what the locomotive does, or both: one or two sentences, never
/// empty.
[[nodiscard]] Glib::ustring train_sentence(const Lok& lok);

/// A note on a zone that has a locomotive: the locomotive is held, its place is unknown, or the
/// zone is reserved for it while the detector reports it free. Empty otherwise.
[[nodiscard]] Glib::ustring zone_note(const Zone& zone);

/// The locomotives below `parent` that block control holds.
[[nodiscard]] std::vector<Lok*> held_trains(const Object& parent);
/// The locomotives below `parent` that are commanded to move while their place is unknown, so that
/// block control cannot brake them. Empty in a layout without detectors.
[[nodiscard]] std::vector<Lok*> unplaced_trains(const Object& parent);

}  // namespace zemblar
