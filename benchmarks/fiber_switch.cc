// What it costs to go to a fiber and back, and to begin and end one.

#include <boost/context/detail/fcontext.hpp>
#include <memory>

#include "benchmarks/ratio.h"
#include "runtime/fiber.h"

#if defined(__SSE__)
#include <immintrin.h>
#endif

namespace zemblar::bench {
namespace {

using boost::context::detail::fcontext_t;
using boost::context::detail::jump_fcontext;
using boost::context::detail::make_fcontext;
using boost::context::detail::transfer_t;

/// A context of the library's own that only ever jumps back.
class BareContext {
 public:
  BareContext() : stack_(stack_pool::take()) {
    context_ = make_fcontext(stack_.top, stack_.size(), echo);
  }
  BareContext(const BareContext&) = delete;
  BareContext& operator=(const BareContext&) = delete;
  ~BareContext() { stack_pool::give_back(stack_); }

  void round_trip() { context_ = jump_fcontext(context_, nullptr).fctx; }

 private:
  static void echo(transfer_t from) {
    while (true) from = jump_fcontext(from.fctx, nullptr);
  }

  Stack stack_;
  fcontext_t context_;
};

/// A fiber that only ever yields.
class EchoFiber {
 public:
  EchoFiber() {
    fiber::spawn([this] {
      while (!stop_) fiber::yield([this](fiber* f) { parked_ = f; });
    });
  }
  EchoFiber(const EchoFiber&) = delete;
  EchoFiber& operator=(const EchoFiber&) = delete;
  ~EchoFiber() {
    stop_ = true;
    round_trip();
  }

  void round_trip() { fiber::resume(parked_, 0); }

 private:
  bool stop_ = false;
  fiber* parked_ = nullptr;
};

const Figure round_trip("fiber: resume and yield, to a bare context's jumps", "ns", 3.0,
                        [](Effort effort) {
                          auto bare = std::make_shared<BareContext>();
                          auto echo = std::make_shared<EchoFiber>();
                          const std::size_t count = effort.count(200000);
                          return [bare, echo, count] {
                            return versus(
                                count, [&] { echo->round_trip(); }, [&] { bare->round_trip(); });
                          };
                        });

/// Raises inexact, divide by zero, overflow, underflow, denormal and invalid.
void compute() {
  volatile double one = 1, zero = 0, tiny = 1e-308, huge = 1e308;
  keep(one / 3);
  keep(one / zero);
  keep(huge * huge);
  keep(tiny * tiny);
  keep((tiny / 1e10) * 3);
  keep(zero / zero);
}

unsigned float_state() {
#if defined(__SSE__)
  return _mm_getcsr();
#else
  return 0;
#endif
}

void set_float_state([[maybe_unused]] unsigned state) {
#if defined(__SSE__)
  _mm_setcsr(state);
#endif
}

const Figure after_floats("fiber: resume and yield after floating point, to before", "ns", 1.2,
                          [](Effort effort) {
                            auto echo = std::make_shared<EchoFiber>();
                            const unsigned at_start = float_state();
                            const std::size_t count = effort.count(200000);
                            return [echo, at_start, count] {
                              const auto go = [&] { echo->round_trip(); };
                              Sample sample;
                              set_float_state(at_start);
                              sample.floor = nanoseconds(count, go);
                              compute();
                              sample.figure = nanoseconds(count, go);
                              return sample;
                            };
                          });

void visit_bare_context() {
  const Stack stack = stack_pool::take();
  const fcontext_t context = make_fcontext(
      stack.top, stack.size(), [](transfer_t from) { jump_fcontext(from.fctx, nullptr); });
  jump_fcontext(context, nullptr);
  stack_pool::give_back(stack);
}

const Figure whole_life("fiber: spawn, run and end, to a bare context's", "ns", 5.0,
                        [](Effort effort) {
                          const std::size_t count = effort.count(100000);
                          return [count] {
                            int runs = 0;
                            const auto body = [&runs] { fiber::spawn([&runs] { ++runs; }); };
                            return versus(count, body, visit_bare_context);
                          };
                        });

}  // namespace
}  // namespace zemblar::bench
