#pragma once

#include <sigc++/slot.h>

#include <deque>
#include <utility>

namespace zemblar {

/// A queue for the handlers of block control. A handler that is called while another one runs waits
/// until the outermost one has returned, in the same turn of the main loop: every handler finds the
/// track as it left it.
///
/// Handlers that have waited still belong to the turn. Slots given to `afterwards` run after it.
class BlockControlTurn {
 public:
  /// `make_slot` makes what has to wait; it is empty again when something that it tracks has ended.
  template <typename Handle, typename MakeSlot>
  static void run(const Handle& handle, const MakeSlot& make_slot) {
    if (running_) {
      waiting_.push_back(make_slot());
      return;
    }
    {
      const BlockControlTurn turn;
      handle();
      drain(waiting_);
    }
    call_afterwards();
  }

  [[nodiscard]] static bool is_running() { return running_; }
  /// Calls the slot when the turn is over; only while one is running.
  static void afterwards(sigc::slot<void> slot) { afterwards_.push_back(std::move(slot)); }

 private:
  using Slots = std::deque<sigc::slot<void>>;

  BlockControlTurn() { running_ = true; }
  ~BlockControlTurn() { running_ = false; }

  static void drain(Slots& slots) {
    while (!slots.empty()) {
      const auto next = std::move(slots.front());
      slots.pop_front();
      next();
    }
  }
  // A slot may begin a turn of its own.
  static void call_afterwards() {
    if (afterwards_.empty() || calling_) return;
    calling_ = true;
    drain(afterwards_);
    calling_ = false;
  }

  static inline bool running_ = false;
  static inline bool calling_ = false;
  static inline Slots waiting_;
  static inline Slots afterwards_;
};

}  // namespace zemblar
