#include "runtime/context.h"

#include <cxxabi.h>

#include <boost/context/detail/fcontext.hpp>
#include <cstdlib>

#include "runtime/sanitizer.h"

#if defined(__SSE__)
#include <immintrin.h>
#endif

#ifdef ZEMBLAR_ASAN
#include <sanitizer/common_interface_defs.h>
#endif

// Boost.Context is used at its lowest level because the level above unwinds an abandoned context
// by an exception, which a body with a catch-all would keep for itself.

namespace zemblar {

using boost::context::detail::jump_fcontext;
using boost::context::detail::make_fcontext;
using boost::context::detail::transfer_t;

constinit static Context main_context;
constinit Context* Context::current_ = &main_context;

/// The first thing that happens on a stack after a switch to it.
struct Context::Arrival {
  static void at(transfer_t from) {
    Context& left = *static_cast<Context*>(from.data);
    left.machine_ = from.fctx;
#ifdef ZEMBLAR_ASAN
    const void* bottom = nullptr;
    std::size_t size = 0;
    __sanitizer_finish_switch_fiber(current_->fake_stack_, &bottom, &size);
    if (!left.body_) left.stack_ = {const_cast<void*>(bottom), top_of(bottom, size)};
#endif
  }

  static void* top_of(const void* bottom, std::size_t size) {
    return static_cast<char*>(const_cast<void*>(bottom)) + size;
  }

  static void first(transfer_t from) {
    at(from);
    current_->body_();
    std::abort();  // a body leaves by leave_to
  }
};

Context::~Context() {
  if (body_) stack_pool::give_back(stack_);
}

bool Context::make(void (*body)()) {
  stack_ = stack_pool::take();
  if (!stack_) return false;
  body_ = body;
  machine_ = make_fcontext(stack_.top, stack_.size(), Arrival::first);
  return true;
}

void Context::swap_exception_globals(Context& from, const Context& to) {
  auto* globals = reinterpret_cast<ExceptionGlobals*>(abi::__cxa_get_globals());
  from.exceptions_ = *globals;
  *globals = to.exceptions_;
}

void Context::depart(Context& from, Context& to, [[maybe_unused]] bool for_good) {
  swap_exception_globals(from, to);
  current_ = &to;
#ifdef ZEMBLAR_ASAN
  __sanitizer_start_switch_fiber(for_good ? nullptr : &from.fake_stack_, to.stack_.bottom,
                                 to.stack_.size());
#endif
}

void Context::switch_to(Context& to) {
  Context& from = *current_;
  depart(from, to, false);
  Arrival::at(jump_fcontext(to.machine_, &from));
}

void Context::leave_to(Context& to) {
  Context& from = *current_;
  depart(from, to, true);
  jump_fcontext(to.machine_, &from);
  std::abort();  // nobody comes back
}

void raise_float_flags() {
#if defined(__SSE__)
  constexpr unsigned sticky_flags = 0x3F;
  _mm_setcsr(_mm_getcsr() | sticky_flags);
#endif
}

}  // namespace zemblar
