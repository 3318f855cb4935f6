#pragma once

#include <glibmm/ustring.h>

#include <vector>

namespace zemblar {

class Lok;
class Object;
class Zone;

// Sentences for the person at the railway about locomotives. No signal announces a new one: widgets
// ask again when the layout pulses.

/// "Held: East Curve is taken by Local 24"; empty without the brake.
///
/// The brake goes up before a block that another locomotive holds, and when the point ahead is set
/// so that the way ends or leads to an occupied block. The sentence tells what lies ahead now. With
/// a free way ahead a hand must have set the brake.
[[nodiscard]] Glib::ustring hold_sentence(const Lok& lok);

/// The reason why the hardware does not carry out the locomotive's commands: they are switched off,
/// no station is in service, a station is lost, cannot address it or does not answer, or the track
/// power is off. Empty without a reason.
[[nodiscard]] Glib::ustring reach_sentence(const Lok& lok);

/// All of that, and what the locomotive does: a sentence or two, never empty.
[[nodiscard]] Glib::ustring train_sentence(const Lok& lok);

/// A note on a zone that has a locomotive: the locomotive is held, its place is not known, or the
/// zone is reserved for it and reads free. Empty otherwise.
[[nodiscard]] Glib::ustring zone_note(const Zone& zone);

/// The locomotives below `parent` that block control holds.
[[nodiscard]] std::vector<Lok*> held_trains(const Object& parent);
/// The locomotives below `parent` that are to move although their place is not known: nothing
/// brakes them. None in a layout without detectors.
[[nodiscard]] std::vector<Lok*> unplaced_trains(const Object& parent);

}  // namespace zemblar
