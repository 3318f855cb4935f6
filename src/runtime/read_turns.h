#pragma once

#include <functional>

#include "runtime/scoped_connection.h"
#include "runtime/timer.h"

namespace zemblar {

/// Keeps a source that delivers without a pause from stopping everything else on the main loop.
///
///     turns.take([this] { try_to_read(); });
///     ...
///     turns.rested(time_that_the_read_has_waited_for_bytes);
///
/// Reads are taken in portions. A portion ends after the time `portion`, or with a read that had to
/// wait for its bytes as long as `rest`: meanwhile the main loop could do all else. The read that
/// follows a portion that was used up waits until the loop has served everybody: timers, drawing
/// (which the toolkit does at G_PRIORITY_HIGH_IDLE + 20) and idle work of every priority. While
/// others keep the loop busy all by themselves, it waits for `longest_wait` at most, and once more
/// where another reader had its portion meanwhile: so two sources that flood leave a third of the
/// time to all else. In quiet operation no read waits, and none costs more than a look at the
/// clock.
///
/// Time is that of Clock. A virtual clock stands still while reads follow one another, hence a
/// portion has a greatest count of reads as well.
///
/// For one reader at a time. Needs no fiber. The end of the object cancels.
class ReadTurns {
 public:
  static constexpr std::chrono::milliseconds portion{25};
  static constexpr std::chrono::milliseconds rest{1};
  static constexpr std::chrono::milliseconds longest_wait{25};
  static constexpr unsigned most_reads = 1000;

  /// Calls `read` at once, or later from the main loop when the portion is used up. A read
  /// that still waits is called first.
  void take(std::function<void()> read);
  /// Counts a read. True when it has to wait for its turn.
  [[nodiscard]] bool is_used_up();
  /// Calls `read` when everybody else has had a turn; another portion begins with it.
  void wait(std::function<void()> read);
  /// The last read has waited that long for its bytes.
  void rested(Clock::duration waited);
  /// The read that waits is not called any more.
  void cancel() { waiting_ = nullptr; }

 private:
  void end_portion();

  // The reads of all readers, who share one main loop: the time of the last one, and how many.
  static inline Clock::time_point last_of_all_{};
  static inline unsigned count_of_all_ = 0;

  Clock::time_point begun_{};
  unsigned reads_ = 0;             // in this portion; 0 before its first
  std::function<void()> waiting_;  // empty when no read waits
  Timeout limit_;                  // of its wait
  ScopedConnection idle_;          // ends it; connected for as long
};

}  // namespace zemblar
