// Block control: moves a locomotive's place from block to block, and brakes before a block that is
// not free.

#include <algorithm>
#include <cassert>
#include <limits>
#include <set>

#include "core/alive_guard.h"
#include "locomotives/lok.h"
#include "track/block.h"
#include "track/block_control_turn.h"

namespace zemblar {
namespace {

constexpr unsigned unreachable = std::numeric_limits<unsigned>::max();

unsigned distance(const BlockLink* from, const BlockLink* to) {
  return from->find_distance_to(to).value_or(unreachable);
}

Block* neighbour(const BlockLink* end) {
  const auto* partner = end ? end->get_partner() : nullptr;
  return partner ? partner->get_block() : nullptr;
}

bool is_occupied(const Block* block) {
  return block && block->occupied();
}

/// True if a reservation keeps the block for the locomotive, and it has not come yet.
bool awaits(const Lok& lok, const Block& block) {
  return block.get_reservations().keeps_for(lok) && !lok.spans(&block);
}

/// The blocks that one walk has passed. A walk claims the blocks that it passes, so it must stop
/// before a passed block as before any held one. This class makes it stop even while it only looks
/// ahead and claims nothing. A walk can reach a crossing or a scissor a second time through other
/// links. A block that a reservation keeps for the locomotive ahead of its coming is passed like a
/// free one.
class PassedBlocks {
 public:
  explicit PassedBlocks(const Lok& lok) : lok_(lok) {}

  /// Adds the block. False if the walk must stop before it.
  [[nodiscard]] bool try_pass(const Block* block) {
    return (!block->get_lok() || awaits(lok_, *block)) && passed_.insert(block).second;
  }

 private:
  const Lok& lok_;
  std::set<const Block*> passed_;
};

/// True if a walk of the locomotive from `link` reaches `target`, or a block that stops it, before
/// a dead end or a point set against the train.
bool way_is_open(const Lok& lok, BlockLink* link, const BlockLink* target) {
  PassedBlocks passed(lok);
  for (;;) {
    auto* near = link->get_partner();
    if (!near) return false;
    if (near == target || !passed.try_pass(near->get_block())) return true;
    link = near->get_opposite();
    if (!link) return false;
    if (link == target) return true;
  }
}

/// The link by which the route from `link` through its block enters the next block; null without a
/// route.
BlockLink* one_block_on(BlockLink* link) {
  const auto* far = link->get_opposite();
  return far ? far->get_partner() : nullptr;
}

}  // namespace

void Lok::watch(std::size_t place, sigc::signal<void>& signal, void (Lok::*handler)()) {
  watches_[place] = signal.connect(sigc::bind(sigc::mem_fun(*this, &Lok::on_track_event), handler));
}

void Lok::on_track_event(void (Lok::*handler)()) {
  BlockControlTurn::run([&] { handle(handler); },
                        [&] { return sigc::bind(sigc::mem_fun(*this, &Lok::handle), handler); });
}

void Lok::handle(void (Lok::*handler)()) {
  const AliveGuard alive(*this);
  (this->*handler)();
  if (alive) heed_reservation();
  if (alive) notify_place();
}

// Whatever has moved the front, it must not pass into a block that is reserved for somebody else. A
// report that exchanges the ends leaves the other watches where they are.
void Lok::heed_reservation() {
  if (!must_wait()) return;
  watch(6, neighbour(front)->signal_reserved(), &Lok::on_ahead_reserved);
  set_brake(true);
}

/// True if the block ahead is reserved, and not for this locomotive.
bool Lok::must_wait() const {
  const auto* ahead = neighbour(front);
  return ahead && ahead->is_kept_from(*this);
}

// Emits once for all changes of the place in one handler.
void Lok::notify_place() {
  const Place place{front, back, orientation_known};
  if (std::exchange(notified_place_, place) == place) return;
  const AliveGuard alive(*this);
  signal_place_changed_.emit();
  if (alive) signal_condition_changed().emit(*this);
}

// --- The place and what is watched around it ---

void Lok::reconnect() {
  for (auto& connection : watches_) connection.disconnect();
  if (!front || !back) {
    block_ending_.disconnect();
    link_ending_.disconnect();
    return;
  }
  auto* rear = find_rear_detector();
  if (!rear) {
    lose_track();
    return;
  }
  if (!block_ending_.connected()) {
    block_ending_ = Block::signal_ending().connect(sigc::mem_fun(*this, &Lok::on_block_ending));
    link_ending_ = Block::signal_link_ending().connect(sigc::mem_fun(*this, &Lok::on_link_ending));
  }
  watch(0, front->get_block()->signal_occupied(), &Lok::on_front_occupied);
  watch(1, rear->signal_occupied(), &Lok::on_rear_occupied);
  if (auto* ahead = neighbour(front)) {
    watch(2, ahead->signal_occupied(), &Lok::on_ahead_occupied);
    watch(3, ahead->signal_route(), &Lok::on_ahead_route);
    watch(6, ahead->signal_reserved(), &Lok::on_ahead_reserved);
  }
  if (auto* behind = neighbour(back)) {
    watch(4, behind->signal_occupied(), &Lok::on_behind_occupied);
    watch(5, behind->signal_route(), &Lok::reconnect);
  }
}

Block* Lok::find_rear_detector() const {
  CircleGuard guard;
  auto* link = back;
  while (!link->get_block()->has_input()) {
    auto* far = link->get_opposite();
    if (far == front) break;
    link = far ? far->get_partner() : nullptr;
    if (!link || guard.came_round(link)) return nullptr;
  }
  return link->get_block();
}

void Lok::lose_track() {
  front = back = nullptr;
  reconnect();
}

bool Lok::spans(const Block* block) const {
  if (!front || !back) return false;
  if (front->get_block() == block) return true;
  CircleGuard guard;
  for (auto* link = back; link && !guard.came_round(link); link = one_block_on(link)) {
    if (link->get_block() == block) return true;
    if (link->get_opposite() == front) break;
  }
  return false;
}

// Runs at once, not in a turn, because the block's links are about to be destroyed.
void Lok::on_block_ending(Block* block) {
  if (spans(block)) leave_track();
}

void Lok::on_link_ending(const BlockLink* link) {
  if (link == front || link == back) leave_track();
}

void Lok::leave_track() {
  lose_track();
  // A handler may end this locomotive, or make it hold another block.
  const AliveGuard alive(*this);
  const auto held = blocks_;
  for (auto* block : held) {
    if (!alive) return;
    if (std::ranges::find(blocks_, block) != blocks_.end()) block->clear_lok(this);
  }
  if (alive) notify_place();
}

void Lok::remember_block(Block* block) {
  blocks_.push_back(block);
}

void Lok::forget_block(const Block* block) {
  std::erase(blocks_, block);
}

void Lok::reverse_place() {
  const auto reverse = [this] {
    const AliveGuard alive(*this);
    std::swap(front, back);
    reconnect();
    heed_reservation();
    if (alive) notify_place();
  };
  BlockControlTurn::run(reverse, [&] { return sigc::track_obj(reverse, *this); });
}

// --- Occupancy ---

void Lok::on_ahead_occupied() {
  if (!front) return;
  if (!orientation_known && is_occupied(neighbour(front))) orientation_known = true;
  const AliveGuard alive(*this);
  bool moved = false;
  CircleGuard guard;
  while (auto* near = front->get_partner()) {
    if (near == back || guard.came_round(near)) break;
    auto* block = near->get_block();
    if (block->has_input() && !block->occupied()) {
      set_brake(block->is_kept_from(*this));
      break;
    }
    const bool is_held = block->get_lok() && block->get_lok() != this;
    if (is_held || (!block->has_input() && block->is_kept_from(*this))) {
      set_brake(true);
      break;
    }
    auto* far = block->next_link(near);
    if (!far) break;
    front = far;
    moved = true;
    block->set_lok(this);
    if (!alive || !front) return;
  }
  if (alive && moved) reconnect();
}

void Lok::on_behind_occupied() {
  const auto* behind = neighbour(back);
  if (orientation_known || !behind || !behind->has_input() || !behind->occupied()) return;
  std::swap(front, back);
  orientation_known = true;
  on_ahead_occupied();
}

void Lok::on_front_occupied() {
  if (!front) return;
  const AliveGuard alive(*this);
  bool moved = false;
  CircleGuard guard;
  for (;;) {
    auto* block = front->get_block();
    if (block->occupied()) break;
    block->clear_lok(this);
    if (!alive || !front) return;
    auto* near = front->get_opposite();
    auto* former = near && near != back ? near->get_partner() : nullptr;
    if (!former || guard.came_round(former)) {
      lose_track();
      return;
    }
    moved = true;
    front = former;
  }
  if (!moved) return;
  set_brake(must_wait());
  if (alive) reconnect();
}

void Lok::on_rear_occupied() {
  if (!back) return;
  const AliveGuard alive(*this);
  if (!release_undetected_tail() || !alive || !back) return;
  bool moved = false;
  CircleGuard guard;
  for (;;) {
    auto* block = back->get_block();
    if (!block->has_input() || block->occupied()) break;
    block->leave(this);
    if (!alive || !back) return;
    auto* far = back->get_opposite();
    auto* next = far && far != front ? far->get_partner() : nullptr;
    if (!next || guard.came_round(next)) {
      lose_track();
      return;
    }
    moved = true;
    back = next;
  }
  if (moved) reconnect();
}

/// Releases blocks without a detector at the tail. False when the tail does not move, or the place
/// is lost.
bool Lok::release_undetected_tail() {
  if (back->get_block()->has_input()) return true;
  CircleGuard guard;
  auto* link = back;
  do {
    auto* far = link->get_opposite();
    if (far == front) return false;
    link = far ? far->get_partner() : nullptr;
    if (!link || guard.came_round(link)) {
      lose_track();
      return false;
    }
  } while (!link->get_block()->has_input());
  if (link->get_block()->occupied()) return false;

  // A handler may throw a point, so that the route no longer leads to that detector.
  const AliveGuard alive(*this);
  CircleGuard releasing;
  while (back && !back->get_block()->has_input()) {
    back->get_block()->leave(this);
    if (!alive) return false;
    if (back) back = one_block_on(back);
    if (back && releasing.came_round(back)) back = nullptr;
  }
  if (!back) lose_track();
  return back != nullptr;
}

void Lok::on_ahead_route() {
  if (!front) return;
  const auto* ahead = neighbour(front);
  const AliveGuard alive(*this);
  set_brake(!ahead || ahead->occupied() || ahead->is_kept_from(*this));
  if (alive) reconnect();
}

// Before an occupied block no brake is released, since this signal proves nobody to have moved. A
// train whose turn has come goes on with the speed that was wished for while it waited.
void Lok::on_ahead_reserved() {
  const auto* ahead = neighbour(front);
  if (!ahead || ahead->occupied()) return;
  const AliveGuard alive(*this);
  if (brake_ && !must_wait()) renew_speed();
  if (alive) on_ahead_occupied();
  if (alive && brake_ && !is_in_the_way(neighbour(front))) set_brake(false);
}

/// True if the next block is not free for this locomotive. At the end of the track nothing is.
bool Lok::is_in_the_way(const Block* next) const {
  if (!next) return false;
  const auto* holder = next->get_lok();
  return next->occupied() || (holder && holder != this) || next->is_kept_from(*this);
}

// --- RailCom ---

void Lok::detected(BlockLink* front_, BlockLink* back_, bool certain) {
  assert(front_->get_block() == back_->get_block());
  const auto place = [=, this] {
    const AliveGuard alive(*this);
    place_detected(front_, back_, certain);
    if (alive) heed_reservation();
    if (alive) notify_place();
  };
  BlockControlTurn::run(place, [&] { return sigc::track_obj(place, *this, *front_->get_block()); });
}

void Lok::place_detected(BlockLink* front_, BlockLink* back_, bool certain) {
  auto* block = front_->get_block();
  auto* holder = awaits(*this, *block) ? nullptr : block->get_lok();
  if (is_deleting() || block->is_deleting() || (holder && holder != this)) return;
  if (holder) {
    if (!certain) return;
    orientation_known = true;
    if (travel_sign(front_, back_) == -1) std::swap(front, back);
    return;
  }
  const AliveGuard alive(*this);
  if (!front) {
    assert(!back);
    front = front_;
    back = back_;
    orientation_known = certain;
    block->set_lok(this);
    if (alive) reconnect();
    return;
  }
  move_to_detected(front_, back_, certain);
  if (!alive) return;
  reconnect();
  if (is_occupied(neighbour(front))) on_ahead_occupied();
}

// In the second and the fourth case the end that is farther away walks; this is intended.
void Lok::move_to_detected(BlockLink* front_, BlockLink* back_, bool certain) {
  const auto a = distance(front, front_);
  const auto b = distance(front, back_);
  const auto c = distance(back, front_);
  const auto d = distance(back, back_);
  const auto jump = [&] {
    front = front_;
    back = back_;
    orientation_known = certain;
  };
  const AliveGuard alive(*this);
  const auto exchange_if_certain = [&] {
    if (alive && certain) std::swap(front, back);
  };
  if (a <= std::max(c, d) && b < a) {
    if (!walk(front, front_, [&] { assert(front != front_); })) jump();
  } else if (b <= std::max(c, d) && a < b) {
    if (!walk(back, front_, [&] { assert(back != front_); })) jump();
    exchange_if_certain();
  } else if (d < std::max(a, b) && c < d) {
    if (!walk(back, back_, [&] { assert(back != back_); })) jump();
  } else if (c < std::max(a, b) && d < c) {
    if (!walk(front, back_, [&] { assert(front != back_); })) jump();
    exchange_if_certain();
  }
}

/// Moves `end` to `target`, claiming the blocks on the way. False when the walk fails, so that the
/// place has to jump. Claims nothing if the route ends at a dead end or at a point; claims made
/// before a held block stopped the walk remain.
template <typename Check>
bool Lok::walk(BlockLink*& end, BlockLink* target, const Check& check) {
  if (end == target) return true;
  if (!way_is_open(*this, end, target)) return false;
  const AliveGuard alive(*this);
  PassedBlocks passed(*this);
  do {
    auto* near = end->get_partner();
    if (!near || !passed.try_pass(near->get_block())) return false;
    end = near;
    check();
    auto* far = end->get_opposite();
    if (!far) return false;
    end = far;
    far->get_block()->set_lok(this);
  } while (alive && end && end != target);
  return true;
}

int Lok::travel_sign(const BlockLink* front_, const BlockLink* back_) const {
  if (!orientation_known) return 0;
  const auto w = distance(front_, front);
  const auto x = distance(front_, back);
  const auto y = distance(back_, front);
  const auto z = distance(back_, back);
  const int forwards = direction_ == Direction::Forwards ? 1 : -1;
  if (y > z && w < x) return forwards;
  if (y < z && x < w) return -forwards;
  return 0;
}

}  // namespace zemblar
