#include "runtime/fiber.h"

#include <utility>

namespace zemblar {

// A continuation that throws has started nothing. If it has resumed the fiber before that, the
// fiber runs on all the same: nobody else would continue it.
bool fiber::hand_over() {
  handing_over = true;
  try {
    continuation(this);
  } catch (...) {
    handing_over = false;
    if (std::exchange(goes_on, false)) enter(this);
    throw;
  }
  handing_over = false;
  return std::exchange(goes_on, false);
}

void fiber::rethrow() {
  std::rethrow_exception(std::exchange(exception, nullptr));
}

void fiber::run() {
  fiber* f = current();
  try {
    f->entry();
  } catch (...) {
    // A body handles its own errors; nobody else could.
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
