#pragma once

#include <sigc++/signal.h>

#include <exception>
#include <optional>
#include <vector>

namespace zemblar {

class Block;

/// There is no way to the target as the points lie now.
class RouteNotFound : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "Route Not Found"; }
};

/// One end of a block, where another block's end may be joined to it.
///
/// Joins are symmetric: whoever joins two ends sees to it that the other one is free. `connect`
/// lets go of this link's former partner and not of the other's, which from then on points at a
/// link that does not point back; when that link ends, all who still point at it are let go.
///
/// Handlers of a link's end may find its block half destroyed.
class BlockLink {
 public:
  explicit BlockLink(Block* block);
  /// A copy has the same block and partner, and joins nothing: both know the original alone.
  BlockLink(const BlockLink& other);
  BlockLink& operator=(const BlockLink&) = delete;
  virtual ~BlockLink();

  [[nodiscard]] Block* get_block() const { return block_; }
  /// Null at a dead end.
  [[nodiscard]] BlockLink* get_partner() const { return partner_; }
  [[nodiscard]] bool is_connected() const { return partner_ != nullptr; }
  /// Where a train that enters the block here leaves it; null when there is no way through now.
  [[nodiscard]] BlockLink* get_opposite();

  /// Joins two ends of the track. To join a link with itself, with nothing, or with its present
  /// partner does nothing. Tells the former partner, then this end, then the other.
  void connect(BlockLink* other);
  /// Tells this end, then the former partner.
  void disconnect();

  /// How many blocks a train enters and leaves again on the way that leads out through this link,
  /// until it stands at `target`: 0 for this link and for the link it is joined to, 1 for the far
  /// link of the adjoining block. Points are read as they lie; a route either exists or does not.
  /// Throws RouteNotFound.
  [[nodiscard]] unsigned distance_to(const BlockLink* target) const;
  /// The same without an exception; a null target is never found.
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

/// Ends a walk along the track that goes round in a circle, as it does for ever once a point has
/// been thrown under a train. Ask it once for each step, always with the link at the same place of
/// the step.
///
/// Joins and ways through blocks lead to and fro, so the first link that comes round is the first
/// one that the guard was asked about: the walk has then passed each link of the circle once, and
/// stands where it began. Only if a handler changes the track during the walk, the circle may lack
/// that link. A second mark, which moves on after 1, 2, 4, 8... steps, ends the walk in that case,
/// after a few rounds at the most.
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
