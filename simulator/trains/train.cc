#include "simulator/trains/train.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <utility>

#include "track/block.h"

namespace zemblar::simulator {
namespace {

constexpr double top_step = 126;
constexpr double last_vehicle = 100;  // mm, or less in a short train
constexpr double touch = 1e-3;        // mm

}  // namespace

// --- Motion ---

double Motion::time_to_target() const {
  return std::abs(target - speed) / rate;
}

double Motion::speed_after(double time) const {
  if (time >= time_to_target()) return target;
  return speed + (target > speed ? rate : -rate) * time;
}

double Motion::distance_after(double time) const {
  const double changing = std::min(time, time_to_target());
  return (speed + speed_after(changing)) / 2 * changing + target * (time - changing);
}

std::optional<double> Motion::time_to(double distance) const {
  const double changing = time_to_target();
  const double far = (speed + target) / 2 * changing;
  if (distance > far) {
    if (target == 0) return std::nullopt;
    return changing + (distance - far) / target;
  }
  const double change = target > speed ? rate : -rate;
  const double root = std::sqrt(std::max(0.0, speed * speed + 2 * change * distance));
  return speed + root == 0 ? 0 : 2 * distance / (speed + root);
}

// --- Where it is ---

Train::Train(TrainOptions options, BlockLength length_of)
    : options_(std::move(options)), length_of_(std::move(length_of)), encoder_(options_.address) {
  const double length = options_.length;
  const double locomotive = std::min(options_.locomotive, length);
  contacts_.push_back({0, locomotive});
  if (options_.last_vehicle_draws && locomotive < length) {
    contacts_.push_back({std::max(locomotive, length - last_vehicle), length});
  }
  marks_ = {0, length};
  for (const auto& contact : contacts_) {
    marks_.push_back(contact.from);
    marks_.push_back(contact.to);
  }
  std::ranges::sort(marks_);
  marks_.erase(std::unique(marks_.begin(), marks_.end()), marks_.end());
}

bool Train::place(BlockLink& towards) {
  lift();
  auto* block = towards.get_block();
  auto* rear = block->next_link(&towards);
  if (!rear) return false;
  const double length = length_of_(block);
  pieces_.push_back({block, rear, &towards, length});
  front_ = (length + std::min(length, options_.length)) / 2 - touch;
  while (front_ < options_.length) {
    auto* front = pieces_.front().rear->get_partner();
    rear = front ? front->get_opposite() : nullptr;
    if (!rear) {
      lift();
      return false;
    }
    auto* behind = front->get_block();
    pieces_.push_front({behind, rear, front, length_of_(behind)});
    front_ += pieces_.front().length;
  }
  set_target();
  return true;
}

void Train::lift() {
  pieces_.clear();
  motion_.speed = motion_.target = 0;
  dead_ = false;
}

double Train::way_length() const {
  double length = 0;
  for (const auto& piece : pieces_) length += piece.length;
  return length;
}

const WayPiece& Train::piece_at(double place) const {
  assert(on_track());
  for (const auto& piece : pieces_) {
    if (place < piece.length) return piece;
    place -= piece.length;
  }
  return pieces_.back();
}

const WayPiece& Train::locomotive_piece() const {
  return piece_at(front_ - std::min(options_.locomotive, options_.length) / 2);
}

bool Train::is_in(const Block* block) const {
  return std::ranges::any_of(pieces_, [block](const auto& piece) { return piece.block == block; });
}

bool Train::is_at(const BlockLink* link) const {
  return std::ranges::any_of(
      pieces_, [link](const auto& piece) { return piece.rear == link || piece.front == link; });
}

// Ends that all but touch a border have passed it, so that travelling on leads to the next one.
double Train::place_of(double mark) const {
  return front_ - mark + (forwards_ ? touch : -touch);
}

std::vector<Block*> Train::drawing_blocks() const {
  std::vector<Block*> blocks;
  double start = 0;
  for (const auto& piece : pieces_) {
    const double end = start + piece.length;
    for (const auto& contact : contacts_) {
      const bool in = place_of(contact.to) < end && place_of(contact.from) > start;
      if (in) blocks.push_back(piece.block);
    }
    start = end;
  }
  return blocks;
}

// --- Travel ---

void Train::set_target() {
  const bool turning = wanted_forwards_ != forwards_;
  const bool stopping = dead_ || turning || !powered_;
  motion_.target = stopping ? 0 : options_.top_speed * step_ / top_step;
  motion_.rate = motion_.target > motion_.speed ? options_.acceleration
                 : powered_                     ? options_.deceleration
                                                : options_.emergency_deceleration;
}

void Train::command(unsigned step, bool forwards) {
  step_ = step;
  wanted_forwards_ = forwards;
  if (!on_track()) return;
  // Whoever drives against the buffer again comes to it again.
  if (step > 0) dead_ = false;
  set_target();
}

void Train::emergency_stop() {
  step_ = 0;
  motion_.target = 0;
  motion_.rate = options_.emergency_deceleration;
}

void Train::set_power(bool on) {
  powered_ = on;
  if (on_track()) set_target();
}

void Train::stop_dead() {
  dead_ = true;
  motion_.speed = motion_.target = 0;
}

double Train::run(double time) {
  const double way = motion_.distance_after(time);
  motion_.speed = motion_.speed_after(time);
  front_ += forwards_ ? way : -way;
  return way;
}

/// How far an end of something is from the next border, in the direction of travel.
double Train::distance_to_border(double mark) const {
  const double place = place_of(mark);
  double start = 0;
  double before = 0;
  for (const auto& piece : pieces_) {
    const double end = start + piece.length;
    if (forwards_ && place < end) return end - place;
    if (start < place) before = start;
    start = end;
  }
  return forwards_ ? 0 : place - before;
}

std::optional<double> Train::next_event() const {
  if (!on_track() || !moving()) return std::nullopt;
  std::optional<double> first;
  const auto consider = [&first](std::optional<double> time) {
    if (time && (!first || *time < *first)) first = time;
  };
  for (const double mark : marks_) {
    consider(motion_.time_to(distance_to_border(mark)));
  }
  if (motion_.target == 0) consider(motion_.time_to_target());
  return first;
}

bool Train::at_border() const {
  return forwards_ ? place_of(0) >= way_length() : place_of(options_.length) <= 0;
}

BlockLink* Train::leading_link() const {
  return forwards_ ? pieces_.back().front : pieces_.front().rear;
}

BlockLink* Train::trailing_link() const {
  return forwards_ ? pieces_.front().rear : pieces_.back().front;
}

void Train::enter(BlockLink* in, BlockLink* out) {
  auto* block = in->get_block();
  const double length = length_of_(block);
  if (forwards_) {
    pieces_.push_back({block, in, out, length});
  } else {
    pieces_.push_front({block, out, in, length});
    front_ += length;
  }
}

bool Train::leave() {
  const auto before = pieces_.size();
  if (forwards_) {
    while (pieces_.size() > 1 && place_of(options_.length) >= pieces_.front().length) {
      front_ -= pieces_.front().length;
      pieces_.pop_front();
    }
  } else {
    while (pieces_.size() > 1 && place_of(0) <= way_length() - pieces_.back().length) {
      pieces_.pop_back();
    }
  }
  return pieces_.size() != before;
}

bool Train::turn_if_wanted() {
  if (motion_.speed > 0 || wanted_forwards_ == forwards_) return false;
  forwards_ = wanted_forwards_;
  dead_ = false;
  set_target();
  return true;
}

}  // namespace zemblar::simulator
