#include "track/block_link.h"

#include <utility>

#include "track/block.h"

namespace zemblar {

BlockLink::BlockLink(Block* block) : block_(block) {
  block_->links_.push_back(this);
}

BlockLink::BlockLink(const BlockLink& other) : block_(other.block_), is_copy_(true) {
  point_at(other.partner_);
}

BlockLink::~BlockLink() {
  disconnect();
  for (auto* pointing : std::exchange(pointed_at_by_, {})) {
    pointing->partner_ = nullptr;
    pointing->signal_changed_.emit();
  }
  if (!is_copy_) std::erase(block_->links_, this);
}

void BlockLink::point_at(BlockLink* partner) {
  if (partner_) partner_->forget(this);
  partner_ = partner;
  if (partner_) partner_->pointed_at_by_.push_back(this);
}

void BlockLink::forget(const BlockLink* pointing) {
  std::erase(pointed_at_by_, pointing);
}

BlockLink* BlockLink::get_opposite() {
  return block_->next_link(this);
}

void BlockLink::before_change() const {
  if (!is_copy_) block_->before_change();
}

void BlockLink::connect(BlockLink* other) {
  if (!other || other == this || other == partner_) return;
  auto* former = partner_;
  before_change();
  other->before_change();
  if (former) former->before_change();
  if (former && former->partner_ == this) former->point_at(nullptr);
  point_at(other);
  other->point_at(this);
  if (former) former->signal_changed_.emit();
  signal_changed_.emit();
  other->signal_changed_.emit();
}

// A copy disconnects only itself, since the join belongs to the original.
void BlockLink::disconnect() {
  auto* former = partner_;
  if (!former) return;
  const bool joined = former->partner_ == this;
  before_change();
  if (joined) former->before_change();
  point_at(nullptr);
  if (joined) former->point_at(nullptr);
  signal_changed_.emit();
  if (joined) former->signal_changed_.emit();
}

unsigned BlockLink::distance_to(const BlockLink* target) const {
  if (const auto distance = find_distance_to(target)) return *distance;
  throw RouteNotFound();
}

std::optional<unsigned> BlockLink::find_distance_to(const BlockLink* target) const noexcept {
  if (target == this) return 0;
  unsigned count = 0;
  CircleGuard guard;
  const BlockLink* link = this;
  for (;;) {
    auto* entered = link->partner_;
    if (!entered || entered == this) return std::nullopt;
    if (entered == target) return count;
    link = entered->block_->next_link(entered);
    if (!link || link == this || guard.came_round(link)) return std::nullopt;
    ++count;
    if (link == target) return count;
  }
}

}  // namespace zemblar
