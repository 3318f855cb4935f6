#include "runtime/context.h"

#include "runtime/context_switch.h"

#if defined(__SSE__)
#include <immintrin.h>
#endif

namespace zemblar {

constinit static Context main_context;
constinit Context* Context::current_ = &main_context;

/// The first function on a new stack.
struct Context::Start {
  static void run(boost::context::detail::transfer_t from) {
    arrive(*static_cast<Context*>(from.data), from.fctx);
    current_->body_();
    std::abort();  // a body ends with leave_to
  }
};

Context::~Context() {
  if (body_) stack_pool::give_back(stack_);
}

bool Context::make(void (*body)()) {
  stack_ = stack_pool::take();
  if (!stack_) return false;
  body_ = body;
  machine_ = boost::context::detail::make_fcontext(stack_.top, stack_.size(), Start::run);
  return true;
}

void raise_float_flags() {
#if defined(__SSE__)
  constexpr unsigned sticky_flags = 0x3F;
  _mm_setcsr(_mm_getcsr() | sticky_flags);
#endif
}

}  // namespace zemblar
