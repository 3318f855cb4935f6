#pragma once

#include <giomm/cancellable.h>

#include <chrono>
#include <functional>
#include <memory>

namespace zemblar {

struct Timer;

/// The program's monotonic time: real time, or that of the VirtualClock when one exists.
struct Clock {
  using duration = std::chrono::nanoseconds;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = std::chrono::time_point<Clock>;
  static constexpr bool is_steady = true;

  static time_point now();
};

/// A handle of a callback that runs once or repeatedly after a time. Destroying the handle cancels
/// the callback.
///
/// Callbacks run on the main context from the default main loop, in the order in which they are
/// due; those due at the same time, in the order of arming. A callback may cancel any timeout, its
/// own included, arm others, and destroy the owner of the handle. An exception that leaves it ends
/// the timeout and goes to the handlers added by Glib::add_exception_handler.
class Timeout {
 public:
  /// An unarmed timeout.
  Timeout() = default;
  Timeout(Timeout&& other) noexcept;
  Timeout& operator=(Timeout&& other) noexcept;
  ~Timeout();

  /// Calls `call` after `delay`; in the loop's next iteration when `delay` is zero or less.
  [[nodiscard]] static Timeout once(std::chrono::milliseconds delay, std::function<void()> call);

  /// Calls `call` every `interval`, the first time after one interval, until it returns false.
  [[nodiscard]] static Timeout every(std::chrono::milliseconds interval,
                                     std::function<bool()> call);

  /// Ends the timeout: the callback is not called any more, and its captures are released.
  void cancel();

  /// True while a call is still to come; in a callback, false for `once` and true for `every`.
  bool armed() const;

  /// Gives the timeout up, so that it outlives the handle.
  void release();

 private:
  explicit Timeout(std::shared_ptr<Timer> timer) : timer_(std::move(timer)) {}

  std::shared_ptr<Timer> timer_;
};

/// Suspends the running fiber for `duration`. True when the time has passed; false when
/// `cancellable` was cancelled before or meanwhile. As after a cancelled I/O operation, the fiber
/// continues in the next iteration of the main loop, not inside the cancelling call: the fiber may
/// reset the cancellable, which would deadlock inside its emission.
bool sleep_for(std::chrono::milliseconds duration,
               const Glib::RefPtr<Gio::Cancellable>& cancellable = {});

/// Simulated time. While one exists, Clock, Timeout and sleep_for use its time, which only
/// `advance` changes. If there are several, the newest counts. Timeouts still armed at its end are
/// dropped.
class VirtualClock {
 public:
  VirtualClock();
  ~VirtualClock();
  VirtualClock(const VirtualClock&) = delete;
  VirtualClock& operator=(const VirtualClock&) = delete;

  /// Moves the time forward by `duration`. Runs the pending work of the main context, then each
  /// timeout at the time when it is due, followed by the pending work of the main context. Must not
  /// be called from a callback of this clock.
  void advance(std::chrono::milliseconds duration);

  Clock::time_point now() const;

 private:
  class Queue;

  std::unique_ptr<Queue> queue_;
};

}  // namespace zemblar
