#pragma once

#include <sigc++/slot.h>

#include <deque>
#include <utility>

namespace zemblar {

/// Runs the handlers of block control one after another. A handler that is called while another one
/// runs is queued until the outermost one has returned, in the same iteration of the main loop. So
/// no handler changes the track while another one runs.
///
/// A turn is the outermost handler with all queued ones. Slots given to `afterwards` run after the
/// turn.
class BlockControlTurn {
 public:
  /// `make_slot` makes the slot to be queued; the slot does nothing if an object that it tracks has
  /// ended.
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
  /// Calls the slot after the present turn. Call only while a turn is running.
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
