#pragma once

#include <sigc++/signal.h>
#include <sigc++/trackable.h>

#include <vector>

#include "runtime/scoped_connection.h"

namespace zemblar {

class Block;
class Lok;
class Reservation;

/// The reservations of one block, in the order in which they were made.
///
/// The block is given to the first one as soon as nobody holds it and it is not occupied, and to
/// every one whose locomotive holds it already. Within a turn of block control this waits for the
/// end of the turn. Neighbours hear by Block::signal_reserved that it is kept, or waited for, or
/// not any more.
class ReservationQueue : public sigc::trackable {
 public:
  explicit ReservationQueue(Block& block) : block_(block) {}

  [[nodiscard]] bool empty() const { return all_.empty(); }
  /// True if a reservation keeps the block for this locomotive now.
  [[nodiscard]] bool keeps_for(const Lok& lok) const;
  /// Call when the block's holder or occupancy has changed.
  void look();
  /// Call when the tail of the locomotive has left the block; its holder stays.
  void let_pass(const Lok& lok);
  /// Ends all; the block is about to end.
  void end_all();

 private:
  friend class Reservation;

  void add(Reservation& reservation);
  void remove(Reservation& reservation, Lok& lok, bool kept);
  void serve();
  [[nodiscard]] Reservation* find_due() const;
  [[nodiscard]] Reservation* find_keeping(const Lok& lok) const;

  Block& block_;
  std::vector<Reservation*> all_;
  bool is_serving_ = false;
  bool has_newcomer_ = false;
  bool is_queued_ = false;  // a look waits for the end of the turn
};

/// Keeps a block for one locomotive, once its turn has come, until this is destroyed.
///
/// While it keeps the block, the locomotive is the block's `lok`, even if block control would
/// release it because the head has fallen back. A block that is reserved is not free for anybody
/// else: block control brakes other locomotives before it, and makes them look again when the
/// reservation ends.
///
/// When the tail of the locomotive has left, the block is released. It is asked for again when the
/// block is ahead of the locomotive once more, as after the locomotive has been turned round.
///
/// A reservation is over when the block or the locomotive ends, and when the operator gives the
/// block to nobody or to another locomotive. At its end the block is released, unless the
/// locomotive stands in it.
class Reservation : public sigc::trackable {
 public:
  enum class State { waits, keeps, passed, over };

  /// Both must not be ending.
  Reservation(Block& block, Lok& lok);
  ~Reservation();
  Reservation(const Reservation&) = delete;
  Reservation& operator=(const Reservation&) = delete;

  [[nodiscard]] State get_state() const { return state_; }
  /// Null when it is over.
  [[nodiscard]] const Block* get_block() const { return block_; }
  [[nodiscard]] const Lok* get_lok() const { return lok_; }
  sigc::signal<void>& signal_changed() { return signal_changed_; }

 private:
  friend class ReservationQueue;

  void take();
  void pass();
  void end();
  void on_place_changed();

  Block* block_;
  Lok* lok_;
  State state_ = State::waits;
  ScopedConnection block_ended_;
  ScopedConnection lok_ended_;
  ScopedConnection place_changed_;
  sigc::signal<void> signal_changed_;
};

}  // namespace zemblar
