#include "track/reservation.h"

#include <algorithm>
#include <utility>

#include "core/alive_guard.h"
#include "locomotives/lok.h"
#include "track/block.h"
#include "track/block_control_turn.h"

namespace zemblar {

// --- The queue of a block ---

Reservation* ReservationQueue::find_keeping(const Lok& lok) const {
  const auto found = std::ranges::find_if(all_, [&](const auto* one) {
    return one->lok_ == &lok && one->state_ == Reservation::State::keeps;
  });
  return found == all_.end() ? nullptr : *found;
}

bool ReservationQueue::keeps_for(const Lok& lok) const {
  return block_.get_lok() == &lok && find_keeping(lok);
}

void ReservationQueue::add(Reservation& reservation) {
  all_.push_back(&reservation);
  has_newcomer_ = true;
  look();
}

// Releases a block that was kept, and makes neighbours look again that were braked before it.
// Before an ending block they stay braked, since the track ends there.
void ReservationQueue::remove(Reservation& reservation, Lok& lok, bool kept) {
  std::erase(all_, &reservation);
  const AliveGuard alive(block_);
  if (kept && !keeps_for(lok) && !lok.spans(&block_)) block_.clear_lok(&lok);
  if (alive) look();
  if (alive) block_.signal_reserved().emit();
}

void ReservationQueue::let_pass(const Lok& lok) {
  const AliveGuard alive(block_);
  while (auto* passed = find_keeping(lok)) {
    passed->pass();
    if (!alive) return;
  }
}

void ReservationQueue::end_all() {
  while (!all_.empty()) all_.front()->end();
}

void ReservationQueue::look() {
  if (all_.empty() || is_queued_) return;
  if (!BlockControlTurn::is_running()) return serve();
  is_queued_ = true;
  BlockControlTurn::afterwards(sigc::track_obj(
      [this] {
        is_queued_ = false;
        serve();
      },
      *this));
}

// Handlers may add and end reservations, so each round begins anew.
void ReservationQueue::serve() {
  if (is_serving_) return;
  is_serving_ = true;
  const AliveGuard alive(block_);
  while (auto* due = find_due()) {
    if (due->state_ == Reservation::State::keeps) {
      due->end();
    } else {
      due->take();
    }
    if (!alive) return;
  }
  is_serving_ = false;
  if (std::exchange(has_newcomer_, false) && !all_.empty()) block_.signal_reserved().emit();
}

/// A reservation whose locomotive has lost the block, or one whose turn has come.
Reservation* ReservationQueue::find_due() const {
  const auto* holder = block_.get_lok();
  const bool is_free = !holder && !block_.occupied();
  for (auto* one : all_) {
    const bool holds = one->lok_ == holder;
    if (one->state_ == Reservation::State::keeps) {
      if (!holds) return one;
    } else if (holds || is_free) {
      return one;
    }
  }
  return nullptr;
}

// --- One reservation ---

Reservation::Reservation(Block& block, Lok& lok) : block_(&block), lok_(&lok) {
  block_ended_ = block.signal_deleted().connect([this] { end(); });
  lok_ended_ = lok.signal_deleted().connect([this] { end(); });
  place_changed_ =
      lok.signal_place_changed().connect(sigc::mem_fun(*this, &Reservation::on_place_changed));
  block.get_reservations().add(*this);
}

Reservation::~Reservation() {
  signal_changed_.clear();
  end();
}

// A handler may end the block, the locomotive and this reservation.
void Reservation::take() {
  if (lok_->is_deleting() || block_->is_deleting()) return end();
  state_ = State::keeps;
  auto& block = *block_;
  const AliveGuard alive(block);
  const auto changed = signal_changed_;
  block.set_lok(lok_);
  if (alive) block.signal_reserved().emit();
  changed.emit();
}

void Reservation::pass() {
  state_ = State::passed;
  const auto changed = signal_changed_;
  block_->get_reservations().remove(*this, *lok_, true);
  changed.emit();
}

void Reservation::on_place_changed() {
  if (state_ != State::passed || !lok_->front) return;
  const auto* ahead = lok_->front->get_partner();
  if (!ahead || ahead->get_block() != block_) return;
  state_ = State::waits;
  block_->get_reservations().add(*this);
}

void Reservation::end() {
  if (state_ == State::over) return;
  const bool kept = std::exchange(state_, State::over) == State::keeps;
  auto* const block = std::exchange(block_, nullptr);
  auto* const lok = std::exchange(lok_, nullptr);
  lok_ended_.disconnect();
  block_ended_.disconnect();
  place_changed_.disconnect();
  const auto changed = signal_changed_;
  block->get_reservations().remove(*this, *lok, kept);
  changed.emit();
}

}  // namespace zemblar
