#include "simulator/soak/soak_causes.h"

#include <algorithm>

#include "track/block.h"

namespace zemblar::simulator {
namespace {

/// The facts of one collision: a train has come from its section, the blocks of the last detector
/// that it has reached, into a block where another one is.
class Inquest {
 public:
  Inquest(TrackWitness& witness, const TrackEvent& event)
      : witness_(witness),
        block_(event.block),
        driven_(*witness.find(event.train)),
        other_(*witness.find(event.other)) {
    find_section();
  }

  Cause cause() const {
    if (leads_unseen(driven_) || leads_unseen(other_)) return Cause::undetected;
    if (!draws_there()) return Cause::undetected;
    if (driven_.unheard >= began_ && driven_.lok && driven_.lok->get_brake()) return Cause::unheard;
    if (freed_by_hand()) return Cause::freed_by_hand;
    if (had_false_report()) return Cause::false_report;
    if (driven_.turned >= began_) return Cause::reversed_towards;
    if (began_ == driven_.placed) return Cause::just_placed;
    if (came_lately()) return Cause::one_free_block;
    if (point_thrown()) return Cause::point_thrown;
    if (!driven_.place_is_right()) return Cause::not_placed;
    if (driven_.misplaced >= began_ || !driven_.faces_forwards()) return Cause::wrong_way_round;
    if (!other_.lok || block_->get_lok() != other_.lok) return Cause::unknown_there;
    if (length_ < stopping_way()) return Cause::short_block;
    if (was_silent()) return Cause::false_report;
    return Cause::unexplained;
  }

 private:
  // What shares the detector of the block itself is no warning: it belongs to the way.
  void find_section() {
    const Device* input = nullptr;
    began_ = driven_.placed;
    for (const auto& [block, time] : driven_.entered) {
      if (block == block_) continue;
      if (!input && block->get_input() != block_->get_input()) input = block->get_input();
      if (input && block->get_input() != input) break;
      began_ = time;
      section_.push_back(block);
      length_ += witness_.model.length_of(block);
    }
  }

  /// It pushes vehicles that no detector sees.
  static bool leads_unseen(const Driven& driven) {
    return !driven.train->forwards() && !driven.train->options().last_vehicle_draws;
  }
  bool draws_there() const {
    return std::ranges::count(other_.train->drawing_blocks(), block_) > 0;
  }

  /// Something was wrong with a detector that had to say something here, lately.
  bool had_false_report() const {
    std::vector<const Block*> concerned(section_.begin(), section_.end());
    concerned.push_back(block_);
    for (const auto* train : {driven_.train, other_.train}) {
      for (const auto& piece : train->pieces()) concerned.push_back(piece.block);
    }
    const auto since = std::min(began_, other_.came_into(block_));
    return std::ranges::any_of(
        concerned, [&](const Block* block) { return witness_.false_report(block) >= since; });
  }

  /// A detector on the way was not heard.
  bool was_silent() const {
    const auto silent = [&](const Block* block) { return witness_.silent(block) >= began_; };
    return silent(block_) || std::ranges::any_of(section_, silent);
  }

  bool freed_by_hand() const {
    return driven_.freed >= began_ || witness_.freed(block_) >= other_.came_into(block_);
  }

  /// The block was still free when this train had to be braked.
  bool came_lately() const {
    return other_.came_into(block_) + witness_.longest_report() >= began_;
  }

  bool point_thrown() const {
    const auto thrown = [&](const Block* block) { return witness_.thrown(block) >= began_; };
    return thrown(block_) || std::ranges::any_of(section_, thrown);
  }

  double stopping_way() const {
    const auto& train = driven_.train->options();
    const double reaction = std::chrono::duration<double>(witness_.longest_reaction()).count();
    return train.top_speed * reaction + train.top_speed * train.top_speed / 2 / train.deceleration;
  }

  TrackWitness& witness_;
  Block* block_;
  const Driven& driven_;
  const Driven& other_;
  std::vector<const Block*> section_;
  double length_ = 0;
  Driven::Time began_ = Driven::never;  // when its leading end came into the section
};

bool draws_at(const Train& train, const Device* input) {
  return std::ranges::any_of(train.drawing_blocks(),
                             [input](const Block* block) { return block->get_input() == input; });
}

Cause why_braked(TrackWitness& witness, const Driven& stalled) {
  const auto* lok = stalled.lok;
  if (!lok->front) return Cause::place_lost_braked;
  if (!stalled.place_is_right()) return Cause::place_lost_braked;
  if (!stalled.faces_forwards()) return Cause::wrong_way_round;
  const auto* partner = lok->front->get_partner();
  if (!partner) return Cause::nothing_ahead;
  const auto* ahead = partner->get_block();
  const bool train_there = std::ranges::any_of(witness.trains(), [&](const auto& driven) {
    return &driven != &stalled &&
           (driven.train->is_in(ahead) || draws_at(*driven.train, ahead->get_input()));
  });
  if (train_there) return Cause::waits;
  auto* holder = ahead->get_lok();
  if (holder && holder != lok) return Cause::held_by_absent;
  if (ahead->occupied()) {
    if (draws_at(*stalled.train, ahead->get_input())) {
      // Nothing but itself keeps the block ahead occupied, and nothing will change that.
      if (witness.thrown(ahead) >= stalled.braked) return Cause::own_detector;
    } else if (witness.false_report(ahead) != Driven::never) {
      return Cause::false_report;
    }
  }
  if (witness.changed_hands(ahead) >= stalled.braked) return Cause::let_go_unheard;
  const bool place_reversed = lok->front != stalled.front_at_brake;
  if (place_reversed || stalled.reversed >= stalled.braked) return Cause::brake_left;
  return Cause::unexplained;
}

}  // namespace

Cause cause_of_collision(TrackWitness& witness, const TrackEvent& event) {
  return Inquest(witness, event).cause();
}

Cause cause_of_stall(TrackWitness& witness, const Driven& stalled) {
  const auto* lok = stalled.lok;
  if (lok->get_brake()) return why_braked(witness, stalled);
  if (lok->get_speed_overlay() == 0) return Cause::speed_under_brake;
  if (stalled.train->step() > 0 && stalled.train->at_border()) return Cause::track_ends;
  return Cause::unexplained;
}

}  // namespace zemblar::simulator
