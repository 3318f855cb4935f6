#pragma once

#include <cxxabi.h>

#include <boost/context/detail/fcontext.hpp>
#include <cstdlib>

#include "runtime/context.h"
#include "runtime/sanitizer.h"

#ifdef ZEMBLAR_ASAN
#include <sanitizer/common_interface_defs.h>
#endif

// The switch itself.
//
// Boost.Context is used at its lowest level. The level above unwinds an abandoned context by an
// exception, which a body with a catch-all would swallow.

namespace zemblar {

inline void Context::depart(Context& from, Context& to, [[maybe_unused]] bool for_good) {
  auto* globals = reinterpret_cast<ExceptionGlobals*>(abi::__cxa_get_globals());
  from.exceptions_ = *globals;
  *globals = to.exceptions_;
  current_ = &to;
#ifdef ZEMBLAR_ASAN
  __sanitizer_start_switch_fiber(for_good ? nullptr : &from.fake_stack_, to.stack_.bottom,
                                 to.stack_.size());
#endif
}

inline void Context::arrive(Context& left, void* machine) {
  left.machine_ = machine;
#ifdef ZEMBLAR_ASAN
  const void* bottom = nullptr;
  std::size_t size = 0;
  __sanitizer_finish_switch_fiber(current_->fake_stack_, &bottom, &size);
  if (left.body_) return;
  char* start = static_cast<char*>(const_cast<void*>(bottom));
  left.stack_ = {start, start + size};
#endif
}

inline void Context::switch_to(Context& to) {
  Context& from = *current_;
  depart(from, to, false);
  const auto back = boost::context::detail::jump_fcontext(to.machine_, &from);
  arrive(*static_cast<Context*>(back.data), back.fctx);
}

inline void Context::leave_to(Context& to) {
  Context& from = *current_;
  depart(from, to, true);
  boost::context::detail::jump_fcontext(to.machine_, &from);
  std::abort();  // no context switches back
}

}  // namespace zemblar
