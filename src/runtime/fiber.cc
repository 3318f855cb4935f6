#include "runtime/fiber.h"

#include <cassert>
#include <utility>

namespace zemblar {

/// A continuation that resumes its fiber at once may see the fiber yield anew or end before it
/// returns itself. So it runs from here, where neither can free its captures, and goes back to the
/// fiber afterwards if that still waits: the captures live as long as the wait.
class fiber::Handover {
 public:
  explicit Handover(fiber* f) : fiber_(f), call_(std::move(f->continuation)) {
    f->continuation = nullptr;
    f->handover = this;
  }
  Handover(const Handover&) = delete;
  Handover& operator=(const Handover&) = delete;
  ~Handover() {
    if (!fiber_) return;
    fiber_->handover = nullptr;
    fiber_->continuation = std::move(call_);
  }

  void run() { call_(fiber_); }
  void let_go() { fiber_ = nullptr; }

 private:
  fiber* fiber_;  // null when it has been resumed meanwhile
  std::function<void(fiber*)> call_;
};

fiber* fiber::current() {
  return Context::current()->as_fiber;
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

void fiber::enter(fiber* f) {
  if (f->handover) {
    f->handover->let_go();
    f->handover = nullptr;
  }
  f->caller = Context::current();
  Context::switch_to(f->self);
  f->caller = nullptr;
  if (f->continuation) {
    Handover(f).run();
  } else {
    delete f;
  }
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

std::uint32_t fiber::yield(std::function<void(zemblar::fiber*)> func) {
  assert(func);
  zemblar::fiber* fiber = current();
  assert(fiber);
  fiber->continuation = std::move(func);
  Context::switch_to(*fiber->caller);
  fiber->continuation = nullptr;
  if (fiber->exception) std::rethrow_exception(std::exchange(fiber->exception, nullptr));
  return fiber->value;
}

void fiber::resume(fiber* f, std::uint32_t value) {
  assert(f && !f->caller);
  f->value = value;
  enter(f);
}

void fiber::resume_exception(fiber* f) {
  assert(f && !f->caller);
  f->exception = std::current_exception();
  assert(f->exception);
  f->continuation = nullptr;
  enter(f);
}

}  // namespace zemblar
