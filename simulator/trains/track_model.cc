#include "simulator/trains/track_model.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "devices/device.h"
#include "simulator/trains/track_detector.h"
#include "track/block.h"

namespace zemblar::simulator {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr int longest_shared_input = 4;  // blocks to look through for the zone of an input

TrackDetector* detector_in_memory(const Block* block) {
  return dynamic_cast<TrackDetector*>(block->get_input());
}

/// The side of a block's rails that a decoder whose leading end points at `link` answers from.
unsigned side_at(const Block* block, const BlockLink* link) {
  const auto name = block->get_link_name(link);
  if (name != "left" && name != "right") return 0;
  return (name == "right") != block->get_invert() ? 2 : 1;
}

}  // namespace

/// A train, and how far its journey has been worked out.
struct TrackModel::Run {
  Train* train;
  Clock::time_point settled{};
  double travelled = 0;
  bool settling = false;
  Timeout next;

  [[nodiscard]] double age() const { return Seconds(Clock::now() - settled).count(); }
};

TrackModel::TrackModel(std::uint64_t seed) : detector_of(detector_in_memory), sensors_(seed) {
  sensors_.orientation = [this](const Train& train, const TrackDetector& detector) {
    return side_of(train, detector);
  };
  block_ending_ = Block::signal_ending().connect([this](Block* block) { on_block_ending(block); });
  link_ending_ =
      Block::signal_link_ending().connect([this](const BlockLink* link) { on_link_ending(link); });
}

TrackModel::~TrackModel() = default;

void TrackModel::set_length(const Block* block, double length) {
  assert(length > 0);
  lengths_[block] = length;
}

double TrackModel::length_of(const Block* block) const {
  const auto found = lengths_.find(block);
  return found == lengths_.end() ? default_length_ : found->second;
}

// --- Trains on the track and off it ---

Train& TrackModel::add_train(TrainOptions options) {
  trains_.push_back(std::make_unique<Train>(
      std::move(options), [this](const Block* block) { return length_of(block); }));
  runs_.push_back(std::make_unique<Run>(Run{trains_.back().get()}));
  return *trains_.back();
}

TrackModel::Run& TrackModel::run_of(const Train& train) const {
  const auto found =
      std::ranges::find_if(runs_, [&](const auto& run) { return run->train == &train; });
  assert(found != runs_.end());
  return **found;
}

bool TrackModel::place(Train& train, BlockLink& towards) {
  lift(train);
  if (!train.place(towards)) return false;
  for (const auto& piece : train.pieces()) {
    if (!find_train_in(piece.block, train)) continue;
    train.lift();
    return false;
  }
  auto& run = run_of(train);
  run.settled = Clock::now();
  settle(run);
  return true;
}

void TrackModel::lift(Train& train) {
  auto& run = run_of(train);
  run.next.cancel();
  train.lift();
  sensors_.update(train, {}, nullptr);
}

Train* TrackModel::find_train_in(const Block* block, const Train& besides) const {
  for (const auto& train : trains_) {
    if (train.get() != &besides && train->is_in(block)) return train.get();
  }
  return nullptr;
}

void TrackModel::on_block_ending(const Block* block) {
  for (const auto& train : trains_) {
    if (train->is_in(block)) lift(*train);
  }
  lengths_.erase(block);
}

// The state of a point takes its link with it.
void TrackModel::on_link_ending(const BlockLink* link) {
  for (const auto& train : trains_) {
    if (train->is_at(link)) lift(*train);
  }
}

// --- Commands ---

void TrackModel::command(unsigned address, unsigned step, bool forwards) {
  for (const auto& run : runs_) {
    if (run->train->options().address.number != address) continue;
    catch_up(*run);
    run->train->command(step, forwards);
    settle(*run);
  }
}

void TrackModel::emergency_stop(unsigned address) {
  for (const auto& run : runs_) {
    if (run->train->options().address.number != address) continue;
    catch_up(*run);
    run->train->emergency_stop();
    settle(*run);
  }
}

void TrackModel::set_power(bool on) {
  for (const auto& run : runs_) {
    catch_up(*run);
    run->train->set_power(on);
    settle(*run);
  }
}

// --- Movement ---

void TrackModel::catch_up(Run& run) {
  const double time = run.age();
  run.settled = Clock::now();
  if (run.train->on_track() && run.train->moving()) run.travelled += run.train->run(time);
}

// A handler of what is told here may command the same train: then the outermost call goes on with
// what came of that.
void TrackModel::settle(Run& run) {
  if (run.settling) return;
  run.settling = true;
  auto& train = *run.train;
  while (train.on_track()) {
    if (train.turn_if_wanted()) {
      emit({TrackEvent::Kind::turned, &train, train.leading_link()->get_block()});
    } else if (!train.moving() || !train.at_border() || !advance(run)) {
      break;
    }
  }
  run.settling = false;
  if (!train.on_track()) return;
  auto* rear = train.trailing_link()->get_block();
  const bool left = train.leave();
  look(run);
  arm(run);
  if (left) emit({TrackEvent::Kind::left, &train, rear});
}

/// Into the next block; false when there is none.
bool TrackModel::advance(Run& run) {
  auto& train = *run.train;
  auto* end = train.leading_link();
  auto* in = end->get_partner();
  auto* out = in ? in->get_opposite() : nullptr;
  if (!out) {
    train.stop_dead();
    ++times_run_off_;
    emit({TrackEvent::Kind::ran_off, &train, end->get_block(), nullptr, in != nullptr});
    return false;
  }
  auto* block = in->get_block();
  auto* other = find_train_in(block, train);
  train.enter(in, out);
  if (other) {
    hit(run, *block, *other);
  } else {
    emit({TrackEvent::Kind::entered, &train, block});
  }
  return true;
}

void TrackModel::hit(Run& run, Block& block, Train& other) {
  ++collisions_;
  run.train->stop_dead();
  auto& hit = run_of(other);
  catch_up(hit);
  other.stop_dead();
  arm(hit);
  emit({TrackEvent::Kind::collision, run.train, &block, &other});
}

void TrackModel::look(Run& run) {
  auto& train = *run.train;
  std::vector<TrackDetector*> drawing;
  for (const auto* block : train.drawing_blocks()) {
    auto* detector = detector_of(block);
    if (!detector || std::ranges::find(drawing, detector) != drawing.end()) continue;
    drawing.push_back(detector);
  }
  auto* answering = detector_of(train.locomotive_piece().block);
  sensors_.update(train, std::move(drawing), answering);
}

// The rails of a detector have one polarity: where a point has a zone's detector, the side is the
// one at which the same locomotive stands in that zone, which is found ahead of it or behind it.
unsigned TrackModel::side_of(const Train& train, const TrackDetector& detector) const {
  const auto& piece = train.locomotive_piece();
  if (const auto side = side_at(piece.block, piece.front)) return side;
  for (const bool ahead : {true, false}) {
    auto* out = ahead ? piece.front : piece.rear;
    for (int i = 0; i < longest_shared_input && out; ++i) {
      auto* in = out->get_partner();
      if (!in || detector_of(in->get_block()) != &detector) break;
      out = in->get_opposite();
      const auto side = side_at(in->get_block(), ahead ? out : in);
      if (side) return side;
    }
  }
  return 0;
}

// Rounded up, so that what is waited for has happened then.
void TrackModel::arm(Run& run) {
  const auto left = run.train->next_event();
  if (!left) {
    run.next.cancel();
    return;
  }
  const auto wait = std::max(std::chrono::ceil<std::chrono::milliseconds>(Seconds(*left)),
                             std::chrono::milliseconds(1));
  run.next = Timeout::once(wait, [this, &run] {
    catch_up(run);
    settle(run);
  });
}

void TrackModel::emit(const TrackEvent& event) {
  signal_event_.emit(event);
}

double TrackModel::speed(const Train& train) const {
  return train.motion().speed_after(run_of(train).age());
}

double TrackModel::travelled(const Train& train) const {
  const auto& run = run_of(train);
  return run.travelled + train.motion().distance_after(run.age());
}

}  // namespace zemblar::simulator
