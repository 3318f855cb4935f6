#include "runtime/timer.h"

#include <glibmm/main.h>

#include <algorithm>
#include <cassert>
#include <limits>

#include "runtime/fiber.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer_queue.h"

namespace zemblar {
namespace {

/// Timers of the real clock. One source of the default main context serves them all, since one
/// source each would slow down every iteration of the loop.
class LoopQueue : public TimerQueue {
 public:
  LoopQueue() {
    static GSourceFuncs functions = {prepare, check, dispatch, nullptr, nullptr, nullptr};
    GSource* source = g_source_new(&functions, sizeof(Source));
    reinterpret_cast<Source*>(source)->queue = this;
    // A callback may run a modal dialog, during which other timers must fire.
    g_source_set_can_recurse(source, TRUE);
    g_source_attach(source, nullptr);
  }

  Clock::time_point now() const override {
    return Clock::time_point(std::chrono::steady_clock::now().time_since_epoch());
  }

 private:
  struct Source {
    GSource base;
    LoopQueue* queue;
  };

  static LoopQueue& of(GSource* source) { return *reinterpret_cast<Source*>(source)->queue; }

  static gboolean prepare(GSource* source, gint* timeout) {
    *timeout = of(source).milliseconds_left();
    return *timeout == 0;
  }

  static gboolean check(GSource* source) { return of(source).milliseconds_left() == 0; }

  static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
    LoopQueue& queue = of(source);
    // A timer armed by a callback is due later than this, so that the loop ends.
    const auto time = queue.now();
    for (auto due = queue.next_due(); due && *due <= time; due = queue.next_due()) {
      queue.fire_first();
    }
    return G_SOURCE_CONTINUE;
  }

  /// Milliseconds until the first timer is due; -1 without a timer, as for poll().
  int milliseconds_left() const {
    const auto due = next_due();
    if (!due) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
  }
};

TimerQueue* simulated_queue = nullptr;

TimerQueue& current_queue() {
  if (simulated_queue) return *simulated_queue;
  // Never destroyed, because static objects may cancel timers when the process ends.
  static TimerQueue* const queue = new LoopQueue;
  return *queue;
}

std::shared_ptr<Timer> arm(Clock::duration delay, Clock::duration interval,
                           std::function<bool()> call) {
  auto timer = std::make_shared<Timer>();
  timer->call = std::move(call);
  timer->interval = interval;
  TimerQueue& queue = current_queue();
  queue.insert(timer, queue.now() + std::max(delay, Clock::duration::zero()));
  return timer;
}

}  // namespace

Clock::time_point Clock::now() {
  return current_queue().now();
}

Timeout::Timeout(Timeout&& other) noexcept = default;

Timeout& Timeout::operator=(Timeout&& other) noexcept {
  if (this == &other) return *this;
  cancel();
  timer_ = std::move(other.timer_);
  return *this;
}

Timeout::~Timeout() {
  cancel();
}

Timeout Timeout::once(std::chrono::milliseconds delay, std::function<void()> call) {
  assert(call);
  return Timeout(arm(delay, {}, [call = std::move(call)] {
    call();
    return false;
  }));
}

Timeout Timeout::every(std::chrono::milliseconds interval, std::function<bool()> call) {
  assert(call);
  assert(interval.count() > 0);
  return Timeout(arm(interval, interval, std::move(call)));
}

void Timeout::cancel() {
  // Moved out of the handle first: releasing the captures may destroy the handle's owner.
  const auto timer = std::move(timer_);
  if (!timer) return;
  if (timer->queue) timer->queue->erase(*timer);
  timer->repeating_call = false;
}

bool Timeout::armed() const {
  return timer_ && (timer_->queue || timer_->repeating_call);
}

void Timeout::release() {
  timer_.reset();
}

bool sleep_for(std::chrono::milliseconds duration,
               const Glib::RefPtr<Gio::Cancellable>& cancellable) {
  if (cancellable && cancellable->is_cancelled()) return false;
  Timeout timeout;
  ScopedConnection on_cancel;
  const auto passed = fiber::yield([&](fiber* f) {
    timeout = Timeout::once(duration, [f] { fiber::resume(f, 1); });
    if (!cancellable) return;
    on_cancel = cancellable->signal_cancelled().connect([&timeout, f] {
      if (!timeout.armed()) return;
      timeout.cancel();
      Glib::signal_idle().connect_once([f] { fiber::resume(f, 0); }, Glib::PRIORITY_DEFAULT);
    });
  });
  return passed != 0;
}

class VirtualClock::Queue : public TimerQueue {
 public:
  Queue() : outer(std::exchange(simulated_queue, this)) {}
  ~Queue() override { simulated_queue = outer; }

  Clock::time_point now() const override { return time; }

  Clock::time_point time{std::chrono::hours(1)};  // not zero, which may stand for "never"
  bool advancing = false;

 private:
  TimerQueue* outer;
};

VirtualClock::VirtualClock() : queue_(std::make_unique<Queue>()) {}

VirtualClock::~VirtualClock() {
  assert(!queue_->advancing);
}

Clock::time_point VirtualClock::now() const {
  return queue_->now();
}

static void run_pending() {
  while (g_main_context_iteration(nullptr, FALSE)) continue;
}

void VirtualClock::advance(std::chrono::milliseconds duration) {
  assert(!queue_->advancing);
  queue_->advancing = true;
  const auto target = queue_->time + duration;
  run_pending();
  for (auto due = queue_->next_due(); due && *due <= target; due = queue_->next_due()) {
    queue_->time = *due;
    queue_->fire_first();
    run_pending();
  }
  queue_->time = target;
  queue_->advancing = false;
}

}  // namespace zemblar
