#pragma once

#include <cassert>
#include <cstdint>
#include <exception>
#include <functional>

#include "runtime/context_switch.h"

namespace zemblar {

/// A coroutine with a stack of its own: straight-line code that waits.
///
///     fiber::spawn([port] {
///       fiber::yield([port](fiber* f) { port->when_ready([f] { fiber::resume(f, 0); }); });
///       ...
///     });
///
/// Fibers are cooperative and share the thread of the main loop: between two yields nothing else
/// runs, and at a yield anything may happen, so state read before it is read again after it, and
/// an object needed across it is held or watched.
///
/// A fiber belongs to the machinery and is freed when its body ends. Whoever holds a `fiber*` is a
/// pending completion and resumes it exactly once. No fiber can be ended from outside: its owner
/// cancels a Gio::Cancellable which the body looks at after each wait.
///
/// The stack is meant for conversations: at least 32 KiB can be relied on (256 KiB are reserved).
/// No modal dialogs, no std::regex, no deep recursion.
class fiber {
 public:
  /// Runs `entry` on a new fiber at once, until it first yields or ends; returns after that. An
  /// exception that leaves `entry` is swallowed. When no stack can be had, `entry` never runs.
  /// May be called from anywhere, another fiber included.
  static void spawn(std::function<void()> entry);

  /// Suspends the running fiber until it is resumed. Only on a fiber.
  ///
  /// `func` runs on the side that gets control, with the fiber fully suspended: it starts what will
  /// resume the fiber later, and may also resume it at once. The fiber then runs on when `func` has
  /// returned, so that a wait that is over at once needs no stack, however often it happens. The
  /// captures live for the length of the wait. `func` must not wait itself, and must not throw: the
  /// exception would reach the resumer, and the fiber would wait for ever.
  ///
  /// Returns the word given to `resume`, or rethrows what `resume_exception` brought.
  static std::uint32_t yield(std::function<void(fiber*)> func);

  /// Continues a suspended fiber; returns when it next yields or ends. From another fiber, control
  /// comes back to that one. While the fiber's `func` of `yield` runs, this returns at once, and
  /// the side that runs `func` continues the fiber next.
  static void resume(fiber* f, std::uint32_t value);

  /// Continues a suspended fiber with the exception being handled: to be called in a catch block.
  static void resume_exception(fiber* f);

  /// The running fiber; null on the main context and on a generator.
  static fiber* current();

  fiber(const fiber&) = delete;
  fiber& operator=(const fiber&) = delete;

 private:
  explicit fiber(std::function<void()> body) : entry(std::move(body)) {}

  static void run();
  static void enter(fiber* f);
  [[nodiscard]] bool is_waiting() const { return !caller && !goes_on; }
  /// Runs the continuation. True when the fiber was resumed meanwhile.
  [[nodiscard]] bool hand_over();
  [[noreturn]] void rethrow();

  std::function<void(fiber*)> continuation;  // empty while running, and for good when ended
  std::function<void()> entry;
  std::exception_ptr exception;  // to be rethrown by the present yield
  Context* caller = nullptr;     // null while suspended
  Context self;
  std::uint32_t value = 0;
  bool handing_over = false;  // its continuation runs
  bool goes_on = false;       // it was resumed meanwhile
};

// The way to a fiber and back is inline: a return from a function that was entered before a switch
// is mispredicted, and two of them cost more than the switches.

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
  if (f->handing_over) {
    f->goes_on = true;
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
  } while (f->hand_over());
}

}  // namespace zemblar
