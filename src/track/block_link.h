#pragma once

#include <sigc++/signal.h>

#include <exception>
#include <optional>
#include <vector>

namespace zemblar {

class Block;

/// There is no route to the target with the present states of the points.
class RouteNotFound : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "Route Not Found"; }
};

/// One end of a block. It may be joined to an end of another block.
///
/// Joins are symmetric if the caller of `connect` makes sure that `other` is free. `connect`
/// disconnects this link's former partner, but not that of `other`, which then still points at
/// `other` although `other` does not point back. A link that ends disconnects all links that point
/// at it.
///
/// When a link ends, handlers of `signal_changed` may find its block half destroyed.
class BlockLink {
 public:
  explicit BlockLink(Block* block);
  /// A copy has the same block and partner, but is not joined: block and partner know only the
  /// original.
  BlockLink(const BlockLink& other);
  BlockLink& operator=(const BlockLink&) = delete;
  virtual ~BlockLink();

  [[nodiscard]] Block* get_block() const { return block_; }
  /// The partner; null at a dead end.
  [[nodiscard]] BlockLink* get_partner() const { return partner_; }
  [[nodiscard]] bool is_connected() const { return partner_ != nullptr; }
  /// The link by which a train that enters the block here leaves it; null when the points give no
  /// route now.
  [[nodiscard]] BlockLink* get_opposite();

  /// Joins two ends of the track. Does nothing for null, for this link itself and for the present
  /// partner. Emits `signal_changed` of the former partner, then of this link, then of `other`.
  void connect(BlockLink* other);
  /// Emits `signal_changed` of this link, then of the former partner.
  void disconnect();

  /// Number of blocks that a train which leaves through this link passes through until it reaches
  /// `target`: 0 for this link and for its partner, 1 for the opposite link of the adjoining block.
  /// The points are taken in their present states. Throws RouteNotFound.
  [[nodiscard]] unsigned distance_to(const BlockLink* target) const;
  /// The same without an exception; no value if there is no route or `target` is null.
  [[nodiscard]] std::optional<unsigned> find_distance_to(const BlockLink* target) const noexcept;

  /// The partner has changed.
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  void before_change() const;
  void point_at(BlockLink* partner);
  void forget(const BlockLink* pointing);

  Block* block_;
  bool is_copy_ = false;
  BlockLink* partner_ = nullptr;
  std::vector<BlockLink*> pointed_at_by_;
  sigc::signal<void> signal_changed_;
};

/// Detects a walk along the track that goes round in a circle, which can happen once a point has
/// been thrown under a train. Call `came_round` once in each step, always with the link at the same
/// place of the step.
///
/// Joins and routes through blocks work in both directions, so the first link to come round is the
/// first one given: the walk has then passed each link of the circle once and is back at its start.
/// If a handler changes the track during the walk, the circle may miss that link. A second mark,
/// which moves on after 1, 2, 4, 8... steps, ends the walk in that case after a few rounds at most.
class CircleGuard {
 public:
  [[nodiscard]] bool came_round(const BlockLink* link) noexcept {
    if (link == first_ || link == mark_) return true;
    if (!first_) first_ = link;
    ++steps_;
    if ((steps_ & (steps_ - 1)) == 0) mark_ = link;
    return false;
  }

 private:
  const BlockLink* first_ = nullptr;
  const BlockLink* mark_ = nullptr;
  unsigned long steps_ = 0;
};

}  // namespace zemblar
