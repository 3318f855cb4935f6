#pragma once

#include <glibmm/ustring.h>

#include <vector>

namespace zemblar {

class Lok;
class Object;
class Zone;

// What a locomotive does and why, in words for the person at the railway. Nothing of it is
// announced: whoever shows it asks again when the layout pulses.

/// "Held: East Curve is taken by Local 24"; empty without the brake.
///
/// The brake goes up before a block that another locomotive holds, and when the point ahead is set
/// so that the way ends or leads to an occupied block. The sentence tells what lies ahead now.
[[nodiscard]] Glib::ustring hold_sentence(const Lok& lok);

/// What keeps the hardware from carrying out what the locomotive is told: commands that are
/// switched off, no station in service, a station that is lost, cannot address it or does not
/// answer, track power that is off. Empty if nothing does.
[[nodiscard]] Glib::ustring reach_sentence(const Lok& lok);

/// All of that, and what the locomotive does: a sentence or two, never empty.
[[nodiscard]] Glib::ustring train_sentence(const Lok& lok);

/// What is out of the ordinary with the locomotive in a zone: it is held, its place is not known,
/// or the zone is held for it and reads free. Empty otherwise.
[[nodiscard]] Glib::ustring zone_note(const Zone& zone);

/// The locomotives below `parent` that block control holds.
[[nodiscard]] std::vector<Lok*> held_trains(const Object& parent);
/// The locomotives below `parent` that are to move although nobody knows where they are: nothing
/// brakes them.
[[nodiscard]] std::vector<Lok*> unplaced_trains(const Object& parent);

}  // namespace zemblar
