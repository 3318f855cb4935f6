#include "runtime/fiber.h"

#include <utility>

namespace zemblar {

// A continuation that throws has started no operation. If it has resumed the fiber before throwing,
// the fiber continues nevertheless, because nothing else would resume it.
bool fiber::run_continuation() {
  in_continuation = true;
  try {
    continuation(this);
  } catch (...) {
    in_continuation = false;
    if (std::exchange(resume_pending, false)) enter(this);
    throw;
  }
  in_continuation = false;
  return std::exchange(resume_pending, false);
}

void fiber::rethrow() {
  std::rethrow_exception(std::exchange(exception, nullptr));
}

void fiber::run() {
  fiber* f = current();
  try {
    f->entry();
  } catch (...) {
    // A body handles its own errors; there is no caller that could.
  }
  Context::leave_to(*f->caller);
}

void fiber::spawn(std::function<void()> entry) {
  static const bool prepared = (raise_float_flags(), true);
  static_cast<void>(prepared);
  auto* f = new fiber(std::move(entry));
  f->self.as_fiber = f;
  if (f->self.make(run)) {
    enter(f);
  } else {
    delete f;
  }
}

void fiber::resume_exception(fiber* f) {
  assert(f && f->is_waiting());
  f->exception = std::current_exception();
  assert(f->exception);
  enter(f);
}

}  // namespace zemblar
