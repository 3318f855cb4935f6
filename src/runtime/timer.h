#pragma once

#include <giomm/cancellable.h>

#include <chrono>
#include <functional>
#include <memory>

namespace zemblar {

struct Timer;

/// Time as the program sees it: monotonic, and that of the VirtualClock where one is installed.
struct Clock {
  using duration = std::chrono::nanoseconds;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = std::chrono::time_point<Clock>;
  static constexpr bool is_steady = true;

  static time_point now();
};

/// A callback that runs once or repeatedly when time has passed; ends with its handle.
///
/// Callbacks run on the main context from the default main loop, in order of time and, at the same
/// time, of arming. A callback may cancel any timeout, its own included, arm others and destroy
/// whoever owns the handle. An exception out of it ends the timeout and goes to the handlers added
/// by Glib::add_exception_handler.
class Timeout {
 public:
  /// An unarmed timeout.
  Timeout() = default;
  Timeout(Timeout&& other) noexcept;
  Timeout& operator=(Timeout&& other) noexcept;
  ~Timeout();

  /// Calls `call` after `delay`; at the loop's next turn when that is zero or less.
  [[nodiscard]] static Timeout once(std::chrono::milliseconds delay, std::function<void()> call);

  /// Calls `call` every `interval`, the first time after one interval, until it returns false.
  [[nodiscard]] static Timeout every(std::chrono::milliseconds interval,
                                     std::function<bool()> call);

  /// The callback is not called any more, and its captures are released.
  void cancel();

  /// True while a call is still to come; in a callback, false for `once` and true for `every`.
  bool armed() const;

  /// Lets the timeout go on without the handle.
  void release();

 private:
  explicit Timeout(std::shared_ptr<Timer> timer) : timer_(std::move(timer)) {}

  std::shared_ptr<Timer> timer_;
};

/// Suspends the running fiber for `duration`. True when the time has passed; false when
/// `cancellable` was cancelled before or meanwhile. A cancelled sleeper goes on in the next turn of
/// the main loop and not inside the cancelling call, as a cancelled I/O operation does: it may
/// reset the cancellable, which inside the emission would wait for itself.
bool sleep_for(std::chrono::milliseconds duration,
               const Glib::RefPtr<Gio::Cancellable>& cancellable = {});

/// Simulated time. While one exists, Clock, Timeout and sleep_for follow it, and time stands still
/// but for `advance`. The innermost one counts; timeouts still armed at its end are dropped.
class VirtualClock {
 public:
  VirtualClock();
  ~VirtualClock();
  VirtualClock(const VirtualClock&) = delete;
  VirtualClock& operator=(const VirtualClock&) = delete;

  /// Runs pending work of the main context, then what falls due, each timeout at its own time and
  /// followed by the main context's pending work, up to `duration` from now. Not from a callback of
  /// this clock.
  void advance(std::chrono::milliseconds duration);

  Clock::time_point now() const;

 private:
  class Queue;

  std::unique_ptr<Queue> queue_;
};

}  // namespace zemblar
