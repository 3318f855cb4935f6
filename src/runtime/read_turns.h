#pragma once

#include <functional>

#include "runtime/scoped_connection.h"
#include "runtime/timer.h"

namespace zemblar {

/// Keeps a source that delivers without a pause from stopping everything else on the main loop.
///
///     turns.take([this] { try_to_read(); });
///
/// Reads are taken in portions. A portion begins with the first read after the main loop has come
/// down to idle work, and ends after the time `portion`. The read that follows waits until the loop
/// has served all else: timers, drawing (which the toolkit does at G_PRIORITY_HIGH_IDLE + 20) and
/// idle work of every priority. While others keep the loop busy all by themselves, it waits for
/// `longest_wait` at most. In quiet operation the loop comes down to idle work between two reads,
/// and none of them waits.
///
/// Time is that of Clock. A virtual clock stands still while reads follow one another, hence a
/// portion has a greatest count of reads as well.
///
/// For one reader at a time. Needs no fiber. The end of the object cancels.
class ReadTurns {
 public:
  static constexpr std::chrono::milliseconds portion{25};
  static constexpr std::chrono::milliseconds longest_wait{25};
  static constexpr unsigned most_reads = 1000;

  /// Calls `read` at once, or later from the main loop when the portion is used up. Replaces a read
  /// that still waits.
  void take(std::function<void()> read);
  /// The read that waits is not called any more.
  void cancel() { waiting_ = nullptr; }

 private:
  [[nodiscard]] bool is_used_up();
  void when_idle(int priority);
  void end_portion();

  Clock::time_point begun_;
  unsigned reads_ = 0;             // in this portion
  std::function<void()> waiting_;  // empty when no read waits
  Timeout limit_;                  // of its wait
  ScopedConnection idle_;          // ends the portion; connected for the length of one
};

}  // namespace zemblar
