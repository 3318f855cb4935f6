#include "runtime/fiber.h"

#include <utility>

namespace zemblar {

/// A continuation that resumes its fiber at once may see the fiber yield anew or end before it
/// returns itself. So it runs from here, where neither can free its captures, and goes back to the
/// fiber afterwards if that still waits: the captures live as long as the wait.
class fiber::Handover {
 public:
  explicit Handover(fiber* f) : fiber_(f) {
    call_.swap(f->continuation);
    f->handover = this;
  }
  Handover(const Handover&) = delete;
  Handover& operator=(const Handover&) = delete;
  ~Handover() {
    if (!fiber_) return;
    fiber_->handover = nullptr;
    fiber_->continuation.swap(call_);
  }

  void run() { call_(fiber_); }
  void let_go() { fiber_ = nullptr; }

 private:
  fiber* fiber_;  // null when it has been resumed meanwhile
  std::function<void(fiber*)> call_;
};

fiber::~fiber() = default;

void fiber::hand_over() {
  Handover(this).run();
}

void fiber::let_go_of_handover() {
  handover->let_go();
  handover = nullptr;
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
  assert(f && !f->caller);
  f->exception = std::current_exception();
  assert(f->exception);
  f->continuation = nullptr;
  enter(f);
}

}  // namespace zemblar
