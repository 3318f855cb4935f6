#include "runtime/fiber.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "runtime/generator.h"
#include "runtime/sanitizer.h"

namespace zemblar {
namespace {

using Log = std::vector<std::string>;

/// Suspends the running fiber and leaves it in `place` for the test to resume.
std::uint32_t park(fiber*& place) {
  return fiber::yield([&place](fiber* f) { place = f; });
}

template <typename T>
void resume_with(fiber* f, const T& exception) {
  try {
    throw exception;
  } catch (...) {
    fiber::resume_exception(f);
  }
}

TEST(Fiber, runs_until_its_first_yield_and_is_freed_at_its_end) {
  Log log;
  fiber* parked = nullptr;
  auto token = std::make_shared<int>();
  fiber::spawn([&, token] {
    EXPECT_NE(fiber::current(), nullptr);
    log.push_back("begin");
    log.push_back("got " + std::to_string(park(parked)));
  });
  log.push_back("spawned");
  EXPECT_EQ(fiber::current(), nullptr);
  EXPECT_EQ(token.use_count(), 2);

  fiber::resume(parked, 0xFFFFFFFFu);

  EXPECT_EQ(log, (Log{"begin", "spawned", "got 4294967295"}));
  EXPECT_EQ(token.use_count(), 1);
}

TEST(Fiber, runs_its_continuation_after_it_is_suspended_on_the_side_that_gets_control) {
  Log log;
  fiber* outer = nullptr;
  fiber* inner = nullptr;
  fiber::spawn([&] {
    fiber* self = fiber::current();
    fiber::spawn([&] {
      inner = fiber::current();
      fiber::yield([&](fiber* f) {
        EXPECT_EQ(f, inner);
        EXPECT_EQ(fiber::current(), self) << "an inner fiber returns to the outer one";
        log.push_back("inner waits");
      });
      log.push_back("inner ends");
    });
    log.push_back("outer goes on");
    fiber::yield([&](fiber* f) {
      EXPECT_EQ(fiber::current(), nullptr);
      outer = f;
    });
    fiber::resume(inner, 0);
    log.push_back("outer ends");
  });
  fiber::resume(outer, 0);
  EXPECT_EQ(log, (Log{"inner waits", "outer goes on", "inner ends", "outer ends"}));
}

TEST(Fiber, needs_no_more_stack_the_more_often_it_is_resumed_at_once) {
  for (const bool with_exception : {false, true}) {
    std::uintptr_t highest = 0;
    std::uintptr_t lowest = UINTPTR_MAX;
    int waits = 0;
    fiber::spawn([&] {
      while (waits < 10000) {
        try {
          fiber::yield([&](fiber* f) {
            const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
            highest = std::max(highest, here);
            lowest = std::min(lowest, here);
            with_exception ? resume_with(f, 1) : fiber::resume(f, 1);
          });
        } catch (int) {
        }
        ++waits;
      }
    });
    EXPECT_EQ(waits, 10000);
    EXPECT_LT(highest - lowest, 10000u);
  }
}

TEST(Fiber, may_be_resumed_at_once_by_its_continuation_without_harm_to_the_closure) {
  auto token = std::make_shared<std::string>("large");
  Log log;
  fiber::spawn([&] {
    // Small closures lie inside the function object itself, large ones on the heap.
    const int small = 1;
    fiber::yield([&log, small](fiber* f) {
      fiber::resume(f, 5);
      log.push_back("small " + std::to_string(small));
    });
    const int other = 2;
    fiber::yield([&log, other, token](fiber* f) {
      fiber::resume(f, 6);
      log.push_back(*token + ' ' + std::to_string(other));
    });
    log.push_back("end");
  });
  EXPECT_EQ(log, (Log{"small 1", "large 2", "end"})) << "each continuation to its end";
  EXPECT_EQ(token.use_count(), 1);
}

TEST(Fiber, keeps_the_captures_of_its_continuation_for_the_length_of_the_wait) {
  fiber* parked = nullptr;
  std::weak_ptr<int> seen;
  const auto wait = [&] {
    auto token = std::make_shared<int>();
    seen = token;
    fiber::yield([&parked, token = std::move(token)](fiber* f) { parked = f; });
  };
  fiber::spawn([&] {
    wait();
    EXPECT_TRUE(seen.expired());
    EXPECT_THROW(wait(), int);
    EXPECT_TRUE(seen.expired());
  });
  EXPECT_FALSE(seen.expired());
  fiber::resume(parked, 0);
  EXPECT_FALSE(seen.expired());
  resume_with(parked, 1);
}

TEST(Fiber, rethrows_an_exception_where_it_waits_and_can_wait_on) {
  struct Failure {
    std::shared_ptr<int> token;
  };
  fiber* parked = nullptr;
  auto token = std::make_shared<int>();
  std::uint32_t later = 0;
  fiber::spawn([&] {
    EXPECT_THROW(park(parked), Failure);
    later = park(parked);
  });
  resume_with(parked, Failure{token});
  EXPECT_EQ(token.use_count(), 1) << "the exception is kept after it was delivered";
  fiber::resume(parked, 9);
  EXPECT_EQ(later, 9u);
}

TEST(Fiber, swallows_what_its_body_throws_but_not_what_its_continuation_throws) {
  fiber* parked = nullptr;
  fiber::spawn([] { throw std::runtime_error("nobody listens"); });
  fiber::spawn([&] {
    park(parked);
    throw 5;
  });
  EXPECT_NO_THROW(fiber::resume(parked, 0));

  bool resumed = false;
  EXPECT_THROW(fiber::spawn([&] {
                 fiber::yield([&](fiber* f) {
                   parked = f;
                   throw std::runtime_error("could not start");
                 });
                 resumed = true;
               }),
               std::runtime_error);
  fiber::resume(parked, 0);
  EXPECT_TRUE(resumed);

  bool went_on = false;
  EXPECT_THROW(fiber::spawn([&] {
                 fiber::yield([](fiber* f) {
                   fiber::resume(f, 0);
                   throw std::runtime_error("too late");
                 });
                 went_on = true;
               }),
               std::runtime_error);
  EXPECT_TRUE(went_on);
}

TEST(Fiber, keeps_its_own_exceptions_while_others_handle_theirs) {
  constexpr std::size_t crowd = 4;
  std::vector<fiber*> parked(crowd);
  Log log;
  for (std::size_t i = 0; i < crowd; ++i) {
    fiber::spawn([&, i] {
      try {
        throw i;
      } catch (...) {
        park(parked[i]);
        try {
          throw;
        } catch (std::size_t mine) {
          log.push_back(std::to_string(i) + " has " + std::to_string(mine));
        }
      }
      EXPECT_EQ(std::current_exception(), nullptr);
    });
    EXPECT_EQ(std::current_exception(), nullptr);
  }
  for (const std::size_t i : {2u, 0u, 3u, 1u}) {
    try {
      throw std::runtime_error("on the main context");
    } catch (...) {
      fiber::resume(parked[i], 0);
      EXPECT_THROW(throw, std::runtime_error);
    }
  }
  EXPECT_EQ(log, (Log{"2 has 2", "0 has 0", "3 has 3", "1 has 1"}));
}

TEST(Fiber, may_wait_while_an_exception_unwinds_its_stack) {
  struct WaitsInDestructor {
    fiber*& place;
    ~WaitsInDestructor() {
      EXPECT_EQ(std::uncaught_exceptions(), 1);
      park(place);
      EXPECT_EQ(std::uncaught_exceptions(), 1);
    }
  };
  fiber* parked = nullptr;
  bool caught = false;
  fiber::spawn([&] {
    try {
      WaitsInDestructor guard{parked};
      throw 1;
    } catch (int) {
      caught = true;
    }
  });
  EXPECT_EQ(std::uncaught_exceptions(), 0);
  fiber::spawn([] { EXPECT_EQ(std::uncaught_exceptions(), 0); });
  fiber::resume(parked, 0);
  EXPECT_TRUE(caught);
}

TEST(Fiber, comes_in_thousands_whose_stacks_are_used_again) {
  constexpr std::size_t crowd = 1000;
  for (int round = 0; round < 2; ++round) {
    std::vector<fiber*> parked(crowd);
    std::size_t sum = 0;
    for (auto& place : parked) {
      fiber::spawn([&] {
        volatile char deep[32 * 1024];
        deep[0] = 1;
        deep[sizeof deep - 1] = 1;
        sum += park(place) + static_cast<unsigned char>(deep[0]);
      });
    }
    for (fiber* f : parked) fiber::resume(f, 2);
    EXPECT_EQ(sum, 3 * crowd);
  }
}

__attribute__((noinline)) int recurse(int depth) {  // NOLINT(misc-no-recursion)
  volatile char frame[1024];
  frame[0] = static_cast<char>(depth);
  return depth == 0 ? 0 : recurse(depth - 1) + frame[0];
}

TEST(FiberDeathTest, stops_at_misuse) {
  const auto on_fiber = [](auto body) { fiber::spawn(body); };
  const auto on_generator = [](auto body) { generator::next(generator::create(body), 0); };
  const auto wait = [] { fiber::yield([](fiber*) {}); };

  EXPECT_DEATH(fiber::yield({}), "Assertion `func' failed");
  EXPECT_DEATH(on_fiber([] { fiber::yield({}); }), "Assertion `func' failed");
  EXPECT_DEATH(wait(), "Assertion `fiber' failed");
  EXPECT_DEATH(on_fiber([&] { on_generator(wait); }), "Assertion `fiber' failed");
  EXPECT_DEATH(on_fiber([] { fiber::resume(fiber::current(), 0); }), "Assertion .* failed");
  EXPECT_DEATH(on_fiber([] { fiber::yield([](fiber* f) { fiber::resume_exception(f); }); }),
               "Assertion .*exception.* failed");

  const auto overflow = [] {
    fiber* deep = nullptr;
    fiber::spawn([&deep] {
      park(deep);
      recurse(300);
    });
    fiber::spawn([] { fiber::yield([](fiber*) {}); });  // its stack lies below, within reach
    fiber::resume(deep, 0);
  };
  EXPECT_DEATH(overflow(), "") << "a stack without a guard page";
}

TEST(FiberDeathTest, does_not_run_a_body_without_a_stack) {
#ifdef ZEMBLAR_ASAN
  GTEST_SKIP() << "the sanitizer needs address space of its own";
#endif
  const auto exhaust = [] {
    const rlimit limit = {512u << 20, 512u << 20};
    setrlimit(RLIMIT_AS, &limit);
    bool ran = true;
    for (int i = 0; ran && i < 10000; ++i) {
      ran = false;
      fiber::spawn([&ran] {
        ran = true;
        fiber::yield([](fiber*) {});
      });
    }
    std::exit(!ran && generator::create([] {}) == nullptr ? 0 : 1);
  };
  EXPECT_EXIT(exhaust(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace zemblar
