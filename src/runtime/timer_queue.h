#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "runtime/timer.h"

namespace zemblar {

class TimerQueue;

/// What a Timeout stands for.
struct Timer {
  using Key = std::pair<Clock::time_point, std::uint64_t>;

  std::function<bool()> call;   // false ends it; empty when ended
  Clock::duration interval{};   // between calls; zero for a single one
  Key key;                      // time due, then order of arming
  TimerQueue* queue = nullptr;  // where it waits; null while its callback runs and when ended
  bool repeating_call = false;  // its callback runs and may be called again
};

/// Timers by the time they are due, then by order of arming. Knows no time of its own.
class TimerQueue {
 public:
  virtual ~TimerQueue();

  virtual Clock::time_point now() const = 0;

  void insert(const std::shared_ptr<Timer>& timer, Clock::time_point due);
  void erase(Timer& timer);

  /// When the first timer is due, if there is one.
  std::optional<Clock::time_point> next_due() const;

  /// Takes the first timer out, calls it and puts it back if it goes on.
  void fire_first();

 private:
  std::map<Timer::Key, std::shared_ptr<Timer>> timers_;
  std::uint64_t armed_ = 0;
};

}  // namespace zemblar
