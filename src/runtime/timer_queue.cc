#include "runtime/timer_queue.h"

#include <glibmm/exceptionhandler.h>

namespace zemblar {

TimerQueue::~TimerQueue() {
  // Destroying a callback's captures may cancel other timers, which must not use the queue any
  // more.
  const auto dropped = std::exchange(timers_, {});
  for (const auto& [key, timer] : dropped) timer->queue = nullptr;
  for (const auto& [key, timer] : dropped) timer->call = nullptr;
}

void TimerQueue::insert(const std::shared_ptr<Timer>& timer, Clock::time_point due) {
  timer->key = {due, armed_++};
  timer->queue = this;
  timers_.emplace(timer->key, timer);
}

void TimerQueue::erase(Timer& timer) {
  timer.queue = nullptr;
  timers_.erase(timer.key);
}

std::optional<Clock::time_point> TimerQueue::next_due() const {
  if (timers_.empty()) return {};
  return timers_.begin()->first.first;
}

namespace {

bool call_guarded(Timer& timer) {
  // Moved to a local: the callback may cancel its own timer, which releases the timer's captures.
  auto call = std::move(timer.call);
  timer.repeating_call = timer.interval.count() > 0;
  bool again = false;
  try {
    again = call();
  } catch (...) {
    Glib::exception_handlers_invoke();
  }
  const bool goes_on = std::exchange(timer.repeating_call, false);
  again = again && goes_on;
  if (again) timer.call = std::move(call);
  return again;
}

}  // namespace

void TimerQueue::fire_first() {
  const auto timer = timers_.begin()->second;
  erase(*timer);
  if (call_guarded(*timer)) insert(timer, now() + timer->interval);
}

}  // namespace zemblar
