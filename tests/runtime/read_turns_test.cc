#include "runtime/read_turns.h"

#include <glibmm/main.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "runtime/fiber.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

void spin_for(Clock::duration time) {
  const auto end = Clock::now() + time;
  while (Clock::now() < end) continue;
}

/// Reads a source that never runs dry, and has something to draw after each read.
class Flood {
 public:
  Flood(int count, int drawing_priority, Clock::duration time_for_one = {}) {
    fiber::spawn([=, this] {
      for (reads = 0; reads < count; ++reads) {
        fiber::yield([this](fiber* f) { turns_.take([f] { fiber::resume(f, 0); }); });
        longest_row = std::max(longest_row, ++row_);
        if (!drawing_.connected()) {
          const auto draw = [this] { return row_ = 0, false; };
          drawing_ = Glib::signal_idle().connect(draw, drawing_priority);
        }
        spin_for(time_for_one);
      }
    });
  }
  int reads = 0;
  unsigned longest_row = 0;  // of reads between two drawings

 private:
  unsigned row_ = 0;
  ReadTurns turns_;
  ScopedConnection drawing_;
};

bool run_until(const std::function<bool()>& condition) {
  bool late = false;
  const auto limit = Timeout::once(10s, [&] { late = true; });
  while (!condition() && !late) Glib::MainContext::get_default()->iteration(true);
  return !late;
}

/// How many of 60 reads are taken within the call.
int taken_at_once(ReadTurns& turns, const std::function<void()>& between) {
  int at_once = 0;
  for (int i = 0; i < 60; ++i) {
    bool in_call = true;
    turns.take([&] { at_once += in_call; });
    in_call = false;
    between();
  }
  return at_once;
}

const std::initializer_list<int> all_priorities = {Glib::PRIORITY_DEFAULT,
                                                   Glib::PRIORITY_HIGH_IDLE + 20,
                                                   Glib::PRIORITY_DEFAULT_IDLE, Glib::PRIORITY_LOW};

TEST(ReadTurnsTest, gives_others_their_turn_after_each_portion) {
  for (const int priority : all_priorities) {
    const Flood slow(8, priority, 10ms);
    EXPECT_TRUE(run_until([&] { return slow.reads == 8; })) << priority;
    EXPECT_LE(slow.longest_row, 3u) << "of 10 ms at least, priority " << priority;

    VirtualClock clock;
    const Flood quick(5000, priority);
    clock.advance(0ms);
    EXPECT_EQ(quick.reads, 5000) << priority;
    EXPECT_LE(quick.longest_row, ReadTurns::most_reads) << priority;
  }
}

TEST(ReadTurnsTest, goes_on_beside_others_that_never_rest) {
  const ScopedConnection restless =
      Glib::signal_idle().connect([] { return true; }, Glib::PRIORITY_HIGH_IDLE + 20);
  const Flood flood(8, Glib::PRIORITY_DEFAULT, 10ms);
  EXPECT_TRUE(run_until([&] { return flood.reads == 8; }));
}

TEST(ReadTurnsTest, shares_the_loop_with_others_however_many_sources_never_run_dry) {
  const Flood one(60, Glib::PRIORITY_HIGH_IDLE + 20, 5ms);
  const Flood two(60, Glib::PRIORITY_HIGH_IDLE + 20, 5ms);
  EXPECT_TRUE(run_until([&] { return one.reads == 60 && two.reads == 60; }));
  EXPECT_LE(std::max(one.longest_row, two.longest_row), 20u);

  // What one waits while another reads is no rest for anybody else.
  VirtualClock clock;
  ReadTurns reading, waiting;
  EXPECT_LT(taken_at_once(waiting,
                          [&] {
                            clock.advance(2ms);
                            reading.take([] {});
                            waiting.note_wait(2ms);
                          }),
            60);
}

TEST(ReadTurnsTest, does_not_wait_where_the_source_runs_dry) {
  for (const auto pause : {0ms, 1ms, 20ms}) {
    VirtualClock clock;
    ReadTurns turns;
    const int at_once = taken_at_once(turns, [&] {
      clock.advance(1ms);
      turns.note_wait(pause);
    });
    EXPECT_EQ(pause >= ReadTurns::rest, at_once == 60) << pause.count() << " ms, " << at_once;
  }
}

TEST(ReadTurnsTest, forgets_a_read_that_was_cancelled) {
  VirtualClock clock;
  ReadTurns turns;
  unsigned calls = 0;
  for (unsigned i = 0; i <= ReadTurns::most_reads; ++i) turns.take([&] { ++calls; });
  turns.cancel();
  clock.advance(1s);
  EXPECT_EQ(calls, ReadTurns::most_reads);
}

}  // namespace
}  // namespace zemblar
