#pragma once

#include "runtime/stack_pool.h"

namespace zemblar {

class fiber;
class generator;

/// An execution context of the one thread: the thread's own stack (the main context), or the stack
/// of a fiber or of a generator. Only `fiber` and `generator` use it.
///
/// Destroying a context before its body has ended does not unwind its stack: the locals on it are
/// not destroyed. Exceptions work within one context and never cross a switch; each context has its
/// own stack of caught exceptions.
class Context {
 public:
  /// The main context.
  Context() = default;
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  ~Context();

  /// The running context, never null.
  static Context* current() { return current_; }

  /// Gives this context a stack; `body` starts there at the first switch and must end with
  /// `leave_to`. False when no stack is available.
  [[nodiscard]] bool make(void (*body)());

  /// Saves the running context and continues `to`; returns when another context switches back. This
  /// and `leave_to` are defined in context_switch.h.
  static void switch_to(Context& to);

  /// Continues `to` and never returns. `to` may destroy the context that was left.
  [[noreturn]] static void leave_to(Context& to);

  /// The owner of this context; both are null for the main context.
  fiber* as_fiber = nullptr;
  generator* as_generator = nullptr;

 private:
  /// The C++ runtime's exception state of a thread (Itanium ABI, 2.2.2).
  struct ExceptionGlobals {
    void* caught = nullptr;
    unsigned uncaught = 0;
  };
  struct Start;

  static void depart(Context& from, Context& to, bool for_good);
  static void arrive(Context& left, void* machine);

  static Context* current_;

  void* machine_ = nullptr;
  void (*body_)() = nullptr;
  ExceptionGlobals exceptions_;
  Stack stack_;
  // Only for AddressSanitizer, as are the bounds in `stack_` of the main context.
  void* fake_stack_ = nullptr;
};

/// Raises the sticky floating-point status flags, so that they are the same in all contexts. A
/// switch between contexts whose flags differ costs some 100 ns instead of 7. Call it before making
/// the first context; the first spawn calls it as well.
void raise_float_flags();

}  // namespace zemblar
