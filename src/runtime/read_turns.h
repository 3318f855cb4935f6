#pragma once

#include <functional>

#include "runtime/scoped_connection.h"
#include "runtime/timer.h"

namespace zemblar {

/// Keeps a reader whose source delivers without a pause from starving the rest of the main loop.
///
///     turns.take([this] { try_to_read(); });
///     ...
///     turns.note_wait(time_that_the_read_has_waited_for_bytes);
///
/// Reads come in portions. A portion is used up after the time `portion`. It starts anew at a read
/// that had to wait for its bytes for the time `rest`, since the main loop was free meanwhile.
/// After a portion is used up, the next read waits until the loop has served all other work:
/// timers, drawing (which the toolkit does at G_PRIORITY_HIGH_IDLE + 20) and idle work of every
/// priority. If other work keeps the loop busy all the time, the read waits for `longest_wait` at
/// most, and once more if another reader had its portion meanwhile. So two flooding sources leave a
/// third of the time to all other work. In quiet operation no read waits, and each costs no more
/// than reading the clock.
///
/// Time is that of Clock. A virtual clock stands still between successive reads, so a portion also
/// ends after `most_reads`.
///
/// For one reader at a time. Needs no fiber. The destructor cancels.
class ReadTurns {
 public:
  static constexpr std::chrono::milliseconds portion{25};
  static constexpr std::chrono::milliseconds rest{1};
  static constexpr std::chrono::milliseconds longest_wait{25};
  static constexpr unsigned most_reads = 1000;

  /// Calls `read` at once, or later from the main loop when the portion is used up. If another read
  /// still waits, that one is called first.
  void take(std::function<void()> read);
  /// Counts a read. True when the portion is used up, so that the read has to wait.
  [[nodiscard]] bool is_used_up();
  /// Calls `read` when all other work of the main loop has had a turn; a new portion begins with
  /// it.
  void wait(std::function<void()> read);
  /// Reports how long the last read has waited for its bytes.
  void note_wait(Clock::duration waited);
  /// Drops the waiting read.
  void cancel() { waiting_ = nullptr; }

 private:
  void end_portion();

  // Over all readers, which share one main loop: the time of the last read, and the number of
  // reads.
  static inline Clock::time_point last_of_all_{};
  static inline unsigned count_of_all_ = 0;

  Clock::time_point begun_{};
  unsigned reads_ = 0;             // in this portion; 0 before the first
  std::function<void()> waiting_;  // empty when no read waits
  Timeout limit_;                  // ends the wait of `waiting_` at `longest_wait`
  ScopedConnection idle_;          // ends the wait when the loop is idle; connected during the wait
};

}  // namespace zemblar
