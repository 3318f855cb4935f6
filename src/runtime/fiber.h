#pragma once

#include <cassert>
#include <cstdint>
#include <exception>
#include <functional>

#include "runtime/context_switch.h"

namespace zemblar {

/// A coroutine with a stack of its own, for sequential code that waits.
///
///     fiber::spawn([port] {
///       fiber::yield([port](fiber* f) { port->when_ready([f] { fiber::resume(f, 0); }); });
///       ...
///     });
///
/// Fibers are cooperative and share the thread of the main loop: between two yields nothing else
/// runs, and during a yield anything may happen. After a yield, read state again. Hold a reference
/// to an object that is needed across a yield, or watch its end.
///
/// A fiber owns itself and is freed when its body ends. A pending completion holds a `fiber*` and
/// resumes it exactly once. No fiber can be ended from outside: cancel a Gio::Cancellable which the
/// body checks after each wait.
///
/// The stack has at least 32 KiB to rely on (256 KiB are reserved). No modal dialogs, no
/// std::regex, no deep recursion.
class fiber {
 public:
  /// Runs `entry` on a new fiber at once, until it first yields or ends; returns after that. An
  /// exception that leaves `entry` is swallowed. When no stack is available, `entry` never runs.
  /// May be called from anywhere, also from a fiber.
  static void spawn(std::function<void()> entry);

  /// Suspends the running fiber until it is resumed. Only on a fiber.
  ///
  /// `func` runs in the context that gets control, with the fiber fully suspended. It starts the
  /// operation that will resume the fiber later, and may also resume it at once. Then the fiber
  /// continues when `func` has returned, so that any number of waits that end at once need no extra
  /// stack. The captures of `func` live until the wait ends. `func` must not wait itself, and must
  /// not throw: the exception would reach the resumer, and the fiber would wait for ever.
  ///
  /// Returns the value given to `resume`, or throws the exception given by `resume_exception`.
  static std::uint32_t yield(std::function<void(fiber*)> func);

  /// Continues a suspended fiber; returns to the caller, which may be another fiber, when the fiber
  /// next yields or ends. While the `func` of the fiber's `yield` runs, this returns at once; the
  /// fiber continues when `func` has returned.
  static void resume(fiber* f, std::uint32_t value);

  /// Continues a suspended fiber with the exception being handled. Call it in a catch block.
  static void resume_exception(fiber* f);

  /// The running fiber; null on the main context and on a generator.
  static fiber* current();

  fiber(const fiber&) = delete;
  fiber& operator=(const fiber&) = delete;

 private:
  explicit fiber(std::function<void()> body) : entry(std::move(body)) {}

  static void run();
  static void enter(fiber* f);
  [[nodiscard]] bool is_waiting() const { return !caller && !resume_pending; }
  /// Runs the continuation. True when that has resumed the fiber.
  [[nodiscard]] bool run_continuation();
  [[noreturn]] void rethrow();

  std::function<void(fiber*)> continuation;  // empty while the fiber runs and when it has ended
  std::function<void()> entry;
  std::exception_ptr exception;  // for the present yield to throw
  Context* caller = nullptr;     // null while suspended
  Context self;
  std::uint32_t value = 0;
  bool in_continuation = false;  // the continuation is running
  bool resume_pending = false;   // the running continuation has resumed the fiber
};

// The switches to a fiber and back are inline: the processor mispredicts a return from a function
// that was entered before a switch, and two such returns cost more than the switches.

inline fiber* fiber::current() {
  return Context::current()->as_fiber;
}

inline std::uint32_t fiber::yield(std::function<void(zemblar::fiber*)> func) {
  assert(func);
  zemblar::fiber* fiber = current();
  assert(fiber);
  fiber->continuation.swap(func);
  Context::switch_to(*fiber->caller);
  fiber->continuation = nullptr;
  if (fiber->exception) fiber->rethrow();
  return fiber->value;
}

inline void fiber::resume(fiber* f, std::uint32_t value) {
  assert(f && f->is_waiting());
  f->value = value;
  enter(f);
}

inline void fiber::enter(fiber* f) {
  if (f->in_continuation) {
    f->resume_pending = true;
    return;
  }
  do {
    f->caller = Context::current();
    Context::switch_to(f->self);
    f->caller = nullptr;
    if (!f->continuation) {
      delete f;
      return;
    }
  } while (f->run_continuation());
}

}  // namespace zemblar
