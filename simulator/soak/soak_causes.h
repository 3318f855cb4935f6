#pragma once

#include <array>
#include <map>
#include <string_view>

#include "simulator/trains/track_witness.h"

namespace zemblar::simulator {

/// Why trains collide or stand still under block control. docs/block-control.md explains each to
/// the operator, under the same title.
enum class Cause {
  not_placed,
  wrong_way_round,
  undetected,
  unknown_there,
  false_report,
  reversed_towards,
  just_placed,
  one_free_block,
  point_thrown,
  short_block,
  unheard,
  freed_by_hand,
  track_ends,
  nothing_ahead,
  waits,
  held_by_absent,
  let_go_unheard,
  own_detector,
  brake_left,
  place_lost_braked,
  speed_under_brake,
  unexplained,
};

inline constexpr std::array<std::string_view, 22> cause_titles = {
    "The place of a locomotive is not known",
    "A locomotive stands the wrong way round",
    "Vehicles that draw no current",
    "A train that block control does not know there",
    "A report that was lost, late or doubled",
    "Reversed towards an occupied block",
    "A train that has not left the place where it was put",
    "Two trains into one free block",
    "A point set in front of a train",
    "A block shorter than the braking distance",
    "A train that does not hear that it has to stop",
    "Freed by hand",
    "The end of the track, or a point set against the train",
    "Braked before the end of the track",
    "Waiting for another train",
    "A block held by a train that is not there",
    "A block that was let go without a report",
    "A point set on the train's own detector",
    "The brake stays after a reversal",
    "The brake stays when the place is lost",
    "A speed chosen under the brake",
    "UNEXPLAINED",
};

[[nodiscard]] constexpr std::string_view title(Cause cause) {
  return cause_titles[static_cast<std::size_t>(cause)];
}

/// How often each cause led to a collision or a stall.
using Causes = std::map<Cause, unsigned>;

/// The cause of a collision that has just happened, from the real places of the trains, the places
/// that block control assumes, and the recent events. `unexplained` means that no cause applies: a
/// fault of block control.
[[nodiscard]] Cause cause_of_collision(TrackWitness& witness, const TrackEvent& event);
/// The cause of a stall: the train has had a speed for minutes and has not moved.
[[nodiscard]] Cause cause_of_stall(TrackWitness& witness, const Driven& stalled);

}  // namespace zemblar::simulator
