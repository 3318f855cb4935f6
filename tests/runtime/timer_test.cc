#include "runtime/timer.h"

#include <glibmm/exceptionhandler.h>
#include <glibmm/main.h>
#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "runtime/fiber.h"
#include "runtime/scoped_connection.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;
using Log = std::vector<std::string>;

/// A clock, and a log of what was called at which millisecond of it.
class VirtualTime : public testing::Test {
 protected:
  void note(const std::string& what) {
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(clock.now() - start);
    log.push_back(std::to_string(passed.count()) + ' ' + what);
  }

  Timeout once(std::chrono::milliseconds delay, const std::string& what) {
    return Timeout::once(delay, [this, what] { note(what); });
  }

  VirtualClock clock;
  const Clock::time_point start = clock.now();
  Log log;
};

TEST_F(VirtualTime, fires_in_order_of_time_and_then_of_arming) {
  auto late = once(20ms, "late");
  auto first = once(10ms, "first");
  auto negative = once(-5ms, "negative");
  auto second = once(10ms, "second");
  Timeout from_callback;
  auto third = Timeout::once(10ms, [&] {
    note("third");
    from_callback = once(0ms, "fourth");
  });
  clock.advance(9ms);
  EXPECT_EQ(log, (Log{"0 negative"}));
  clock.advance(1ms);
  EXPECT_EQ(log, (Log{"0 negative", "10 first", "10 second", "10 third", "10 fourth"}));
  EXPECT_TRUE(late.armed());
  clock.advance(1h);
  EXPECT_EQ(log.back(), "20 late");
  EXPECT_FALSE(late.armed());
  EXPECT_EQ(Clock::now() - start, 1h + 10ms);
}

TEST_F(VirtualTime, repeats_until_the_callback_says_no_or_cancels_itself) {
  int left = 3;
  Timeout counted = Timeout::every(10ms, [&] {
    EXPECT_TRUE(counted.armed());
    note("counted");
    return --left > 0;
  });
  Timeout cancelled = Timeout::every(15ms, [&] {
    note("cancelled");
    cancelled.cancel();
    return true;
  });
  clock.advance(1min);
  EXPECT_EQ(log, (Log{"10 counted", "15 cancelled", "20 counted", "30 counted"}));
  EXPECT_FALSE(counted.armed());
}

TEST_F(VirtualTime, ends_a_timeout_with_its_handle_unless_released) {
  auto token = std::make_shared<int>();
  const auto arm = [&](const std::string& what) {
    return Timeout::every(10ms, [this, token, what] {
      note(what);
      return false;
    });
  };
  arm("dropped").armed();
  arm("released").release();
  auto moved_from = arm("moved");
  auto replaced = arm("replaced");
  replaced = std::move(moved_from);
  auto cancelled = arm("cancelled");
  cancelled.cancel();
  EXPECT_EQ(token.use_count(), 3) << "cancelling releases the captures";
  clock.advance(10ms);
  EXPECT_EQ(log, (Log{"10 released", "10 moved"}));
  EXPECT_EQ(token.use_count(), 1) << "the last call releases the captures";
}

TEST_F(VirtualTime, lets_a_callback_change_the_set_of_timeouts) {
  struct Owner {
    Timeout own;
    Timeout other;
    std::string name = "owner";
  };
  auto owner = std::make_unique<Owner>();
  owner->own = Timeout::every(10ms, [&, name = owner->name] {
    owner.reset();
    note(name);
    return true;
  });
  owner->other = once(10ms, "belonged to the owner");
  Timeout again;
  again = Timeout::once(20ms, [&] { again = once(5ms, "again"); });
  clock.advance(1s);
  EXPECT_EQ(log, (Log{"10 owner", "25 again"}));
}

TEST_F(VirtualTime, runs_pending_work_of_the_main_loop_between_callbacks) {
  const auto later = [this](const std::string& what) {
    Glib::signal_idle().connect_once([this, what] { note(what); });
  };
  auto a = Timeout::once(10ms, [&] {
    note("a");
    later("work of a");
  });
  auto b = once(10ms, "b");
  later("work before");
  clock.advance(20ms);
  EXPECT_EQ(log, (Log{"0 work before", "10 a", "10 work of a", "10 b"}));
}

TEST_F(VirtualTime, goes_on_after_a_callback_has_thrown) {
  std::string caught;
  ScopedConnection handler = Glib::add_exception_handler([&] {
    try {
      throw;
    } catch (const std::runtime_error& error) {
      caught = error.what();
    }
  });
  auto token = std::make_shared<int>();
  auto bad = Timeout::every(10ms, [token]() -> bool { throw std::runtime_error("bad"); });
  auto good = once(10ms, "good");
  clock.advance(30ms);
  EXPECT_EQ(caught, "bad");
  EXPECT_EQ(log, (Log{"10 good"}));
  EXPECT_FALSE(bad.armed());
  EXPECT_EQ(token.use_count(), 1);
}

TEST_F(VirtualTime, drops_what_is_armed_when_an_inner_clock_ends) {
  Timeout inner;
  auto outer = once(10ms, "outer");
  {
    VirtualClock other;
    auto chained = std::make_shared<Timeout>(once(5ms, "never"));
    inner = Timeout::once(5ms, [this, chained] { note("never"); });
    chained.reset();
    other.advance(1ms);
  }
  EXPECT_FALSE(inner.armed());
  clock.advance(10ms);
  EXPECT_EQ(log, (Log{"10 outer"}));
}

TEST_F(VirtualTime, lets_fibers_sleep) {
  auto cancellable = Gio::Cancellable::create();
  const auto sleeper = [&](std::chrono::milliseconds duration) {
    fiber::spawn([&, duration] {
      note(sleep_for(duration, cancellable) ? "passed" : "cut");
      if (duration == 10ms) note(sleep_for(20ms) ? "slept" : "cut");
    });
  };
  sleeper(20ms);
  sleeper(10ms);
  sleeper(0ms);
  EXPECT_TRUE(log.empty()) << "even no time is waited for in the loop";
  clock.advance(20ms);
  cancellable->cancel();  // forgotten: each sleep that has had it has passed
  clock.advance(10ms);
  EXPECT_EQ(log, (Log{"0 passed", "10 passed", "20 passed", "30 slept"}));
}

TEST_F(VirtualTime, ends_a_cancelled_sleep_in_the_next_turn_of_the_loop) {
  auto cancellable = Gio::Cancellable::create();
  fiber::spawn([&] {
    note(sleep_for(10ms, cancellable) ? "passed" : "cut");
    cancellable->reset();  // would wait for itself inside the emission
    cancellable->cancel();
    note(sleep_for(10ms, cancellable) ? "passed" : "cut before");
    cancellable.reset();
  });
  clock.advance(5ms);
  cancellable->cancel();
  cancellable->reset();
  cancellable->cancel();  // is no second wake
  EXPECT_TRUE(log.empty());
  clock.advance(0ms);
  EXPECT_EQ(log, (Log{"5 cut", "5 cut before"}));
  clock.advance(1s);
}

TEST(RealTime, fires_in_order_and_never_early) {
  std::vector<int> order;
  const auto start = Clock::now();
  const auto call = [&](int delay) {
    return Timeout::once(std::chrono::milliseconds(delay), [&, delay] {
      EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(delay));
      order.push_back(delay);
    });
  };
  auto six = call(6), two = call(2), cut = call(3), zero = call(0);
  cut.cancel();
  int repeats = 0;
  auto every = Timeout::every(1ms, [&] { return ++repeats < 3; });
  while (six.armed() || every.armed()) Glib::MainContext::get_default()->iteration(true);
  EXPECT_EQ(order, (std::vector<int>{0, 2, 6}));
  EXPECT_EQ(repeats, 3);
}

TEST(RealTime, goes_on_while_a_callback_runs_a_loop_of_its_own) {
  bool inner = false;
  auto timeout = Timeout::once(1ms, [&inner] { inner = true; });
  auto dialog = Timeout::once(0ms, [&inner] {
    auto give_up = Glib::signal_timeout().connect([] { return true; }, 1000);
    for (int turn = 0; !inner && turn < 100; ++turn) {
      Glib::MainContext::get_default()->iteration(true);
    }
    give_up.disconnect();
  });
  while (dialog.armed()) Glib::MainContext::get_default()->iteration(true);
  EXPECT_TRUE(inner);
}

TEST(RealTime, does_not_starve_the_loop_when_timeouts_arm_each_other) {
  bool idle = false;
  Timeout next;
  std::function<void()> chain = [&] {
    if (!idle) next = Timeout::once(0ms, chain);
  };
  chain();
  Glib::signal_timeout().connect_once([&idle] { idle = true; }, 1);
  for (int turn = 0; !idle && turn < 1000000; ++turn) {
    Glib::MainContext::get_default()->iteration(true);
  }
  EXPECT_TRUE(idle);
}

TEST(ScopedConnection, ends_with_its_scope_and_moves) {
  sigc::signal<void> signal;
  int calls = 0;
  const auto count = [&calls] { ++calls; };
  {
    ScopedConnection kept;
    {
      ScopedConnection first = signal.connect(count);
      kept = signal.connect(count);
      kept = std::move(first);
    }
    signal.emit();
    EXPECT_EQ(calls, 1) << "assignment ends the old connection and keeps the moved one";
  }
  signal.emit();
  EXPECT_EQ(calls, 1);
  sigc::connection released = ScopedConnection(signal.connect(count)).release();
  signal.emit();
  EXPECT_EQ(calls, 2);
  released.disconnect();
}

}  // namespace
}  // namespace zemblar
