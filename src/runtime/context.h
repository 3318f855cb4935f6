#pragma once

#include "runtime/stack_pool.h"

namespace zemblar {

class fiber;
class generator;

/// A place where the one thread's control can stand: the thread's own stack (the main context),
/// or the stack of a fiber or of a generator. The common ground of those two; nothing else uses it.
///
/// A context that is dropped before its body has ended is not unwound: the locals on its stack are
/// forgotten, not destroyed. Exceptions work within one context and never cross a switch; each
/// context has its own stack of caught exceptions.
class Context {
 public:
  /// The main context.
  Context() = default;
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  ~Context();

  /// The running context; never null.
  static Context* current() { return current_; }

  /// Gives this context a stack; `body` starts there at the first switch and must end with
  /// `leave_to`. False when no stack can be had.
  [[nodiscard]] bool make(void (*body)());

  /// Saves the running context and continues `to`; returns when somebody switches back. This and
  /// `leave_to` are defined in context_switch.h.
  static void switch_to(Context& to);

  /// Continues `to` for good. The context left may be destroyed from there.
  [[noreturn]] static void leave_to(Context& to);

  /// Whom this context belongs to; both null for the main context.
  fiber* as_fiber = nullptr;
  generator* as_generator = nullptr;

 private:
  /// What the C++ runtime keeps for each thread about exceptions in flight (Itanium ABI, 2.2.2).
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
  // Only for AddressSanitizer: its second stack, and the bounds of a stack that is not ours.
  void* fake_stack_ = nullptr;
};

/// Raises the sticky floating-point status flags, so that they are the same in all contexts. A
/// switch between contexts whose flags differ costs some 100 ns instead of 7. Called once before
/// the first context is made, and by the first spawn at the latest.
void raise_float_flags();

}  // namespace zemblar
