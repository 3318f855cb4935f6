#include "simulator/trains/track_witness.h"

#include <algorithm>

#include "track/block.h"

namespace zemblar::simulator {
namespace {

constexpr std::size_t remembered_blocks = 12;
constexpr double standstill = 1;  // mm

Driven::Time time_of(const std::map<const Block*, Driven::Time>& times, const Block* block) {
  const auto found = times.find(block);
  return found == times.end() ? Driven::never : found->second;
}

}  // namespace

Driven::Time Driven::came_into(const Block* block) const {
  const auto found = std::ranges::find(entered, block, [](const auto& one) { return one.first; });
  return found == entered.end() ? placed : found->second;
}

void Driven::enter(const Block* block, Time time) {
  entered.emplace_front(block, time);
  if (entered.size() > remembered_blocks) entered.pop_back();
}

bool Driven::place_is_right() const {
  if (!lok || !lok->front) return false;
  const auto holds = [this](const BlockLink* end) { return end->get_block()->get_lok() == lok; };
  return train->is_in(lok->back->get_block()) && holds(lok->front) && holds(lok->back);
}

// The head may be believed as far ahead as its own detectors reach.
bool Driven::faces_forwards() const {
  if (!lok) return false;
  const bool forwards = train->forwards();
  const auto drawing = train->drawing_blocks();
  const auto draws_at = [&drawing](const Device* input) {
    return std::ranges::any_of(drawing, [input](auto* one) { return one->get_input() == input; });
  };
  for (const auto& piece : train->pieces()) {
    if (lok->front == (forwards ? piece.front : piece.rear)) return true;
  }
  auto* link = train->leading_link();
  for (std::size_t i = 0; i < remembered_blocks; ++i) {
    auto* in = link ? link->get_partner() : nullptr;
    if (!in || !draws_at(in->get_block()->get_input())) return false;
    link = in->get_opposite();
    if (link == lok->front) return true;
  }
  return false;
}

TrackWitness::TrackWitness(TrackModel& model, std::chrono::milliseconds longest_report,
                           std::chrono::milliseconds longest_command)
    : model(model), longest_report_(longest_report), longest_command_(longest_command) {
  events_ = model.signal_event().connect([this](const TrackEvent& event) { note(event); });
  block_ending_ = Block::signal_ending().connect([this](Block* block) {
    followed_.erase(block);
    for (auto* times : {&thrown_, &changed_hands_, &freed_, &silences_}) times->erase(block);
  });
}

std::chrono::milliseconds TrackWitness::longest_report() const {
  return model.sensor_options().longest_delay + longest_report_;
}

void TrackWitness::follow(Block& block) {
  auto& followed = followed_[&block];
  if (!followed.empty()) return;
  followed.emplace_back(
      block.signal_route().connect([this, &block] { thrown_[&block] = Clock::now(); }));
  followed.emplace_back(block.signal_lok_changed().connect(
      [this, &block] { changed_hands_[&block] = Clock::now(); }));
}

Driven& TrackWitness::add(Train& train, Lok* lok) {
  trains_.push_back({.train = &train});
  assign(trains_.back(), lok);
  return trains_.back();
}

void TrackWitness::assign(Driven& driven, Lok* lok) {
  if (driven.lok == lok) return;
  driven.followed = {};
  driven.lok = lok;
  if (!lok) return;
  driven.followed = {lok->signal_direction_overlay_changed().connect(
                         [this, lok] { find(lok)->reversed = Clock::now(); }),
                     lok->signal_brake_changed().connect([this, lok] { note_brake(*find(lok)); }),
                     lok->signal_deleted().connect([this, lok] { assign(*find(lok), nullptr); })};
}

void TrackWitness::note_brake(Driven& driven) {
  const bool braked = driven.lok->get_brake();
  (braked ? driven.braked : driven.released) = Clock::now();
  if (braked) driven.front_at_brake = driven.lok->front;
}

void TrackWitness::note_placed(Driven& driven) {
  driven.entered.clear();
  driven.placed = driven.moved = Clock::now();
  driven.enter(driven.train->leading_link()->get_block(), driven.placed);
  driven.turned = driven.reversed = driven.braked = driven.misplaced = Driven::never;
}

void TrackWitness::look() {
  for (auto& driven : trains_) {
    const double travelled = model.travelled(*driven.train);
    const bool waits = driven.train->on_track() && driven.lok && driven.lok->get_speed() > 0;
    if (waits && travelled - driven.travelled < standstill) continue;
    driven.moved = Clock::now();
    driven.travelled = travelled;
  }
}

Driven* TrackWitness::find(const Train* train) {
  const auto found = std::ranges::find(trains_, train, &Driven::train);
  return found == trains_.end() ? nullptr : &*found;
}

Driven* TrackWitness::find(const Lok* lok) {
  const auto found = std::ranges::find(trains_, lok, &Driven::lok);
  return found == trains_.end() ? nullptr : &*found;
}

Driven::Time TrackWitness::thrown(const Block* block) const {
  return time_of(thrown_, block);
}

Driven::Time TrackWitness::changed_hands(const Block* block) const {
  return time_of(changed_hands_, block);
}

Driven::Time TrackWitness::freed(const Block* block) const {
  return time_of(freed_, block);
}

Driven::Time TrackWitness::silent(const Block* block) const {
  return time_of(silences_, block);
}

Driven::Time TrackWitness::false_report(const Block* block) const {
  return model.sensors().last_fault(model.detector_of(block)).value_or(Driven::never);
}

void TrackWitness::note(const TrackEvent& event) {
  auto* driven = find(event.train);
  if (!driven) return;
  if (event.kind == TrackEvent::Kind::turned) {
    driven->turned = Clock::now();
    driven->enter(event.block, Clock::now());
  }
  // In a block that it has only just come to it cannot be known yet.
  if (!driven->lok || !driven->lok->front || !driven->faces_forwards()) {
    driven->misplaced = Clock::now();
  }
  if (event.kind != TrackEvent::Kind::entered && event.kind != TrackEvent::Kind::collision) return;
  driven->enter(event.block, Clock::now());
}

}  // namespace zemblar::simulator
