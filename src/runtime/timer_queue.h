#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "runtime/timer.h"

namespace zemblar {

class TimerQueue;

/// The timer behind a Timeout.
struct Timer {
  using Key = std::pair<Clock::time_point, std::uint64_t>;

  std::function<bool()> call;   // returns false to end the timer; empty when ended
  Clock::duration interval{};   // between calls; zero for a single one
  Key key;                      // the time when it is due, then the order of arming
  TimerQueue* queue = nullptr;  // the queue it is in; null while its callback runs and when ended
  bool repeating_call = false;  // the callback is running and may be called again
};

/// Timers, ordered by the time when they are due, then by the order of arming. The derived class
/// provides the time.
class TimerQueue {
 public:
  virtual ~TimerQueue();

  virtual Clock::time_point now() const = 0;

  void insert(const std::shared_ptr<Timer>& timer, Clock::time_point due);
  void erase(Timer& timer);

  /// The time when the first timer is due; no value without a timer.
  std::optional<Clock::time_point> next_due() const;

  /// Removes the first timer, calls it, and puts it back if it repeats.
  void fire_first();

 private:
  std::map<Timer::Key, std::shared_ptr<Timer>> timers_;
  std::uint64_t armed_ = 0;
};

}  // namespace zemblar
