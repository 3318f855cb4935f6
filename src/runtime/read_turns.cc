#include "runtime/read_turns.h"

#include <glibmm/main.h>

#include <algorithm>
#include <utility>

namespace zemblar {

void ReadTurns::take(std::function<void()> read) {
  is_used_up() ? wait(std::move(read)) : read();
}

bool ReadTurns::is_used_up() {
  const auto now = Clock::now();
  if (reads_ == 0) begun_ = now;
  last_of_all_ = now;
  ++count_of_all_;
  return ++reads_ > most_reads || now - begun_ >= portion;
}

// Counts only the time since any reader's last read: during the rest another reader may have used
// the loop.
void ReadTurns::note_wait(Clock::duration waited) {
  if (std::min(waited, Clock::now() - last_of_all_) >= rest) reads_ = 0;
}

void ReadTurns::wait(std::function<void()> read) {
  // A read that still waits belongs to a former connection. Call it, so that its fiber ends with an
  // error.
  if (const auto former = std::exchange(waiting_, nullptr)) former();
  waiting_ = std::move(read);
  const auto once = [this] { return end_portion(), false; };
  idle_ = Glib::signal_idle().connect(once, Glib::PRIORITY_LOW);
  limit_ = Timeout::once(longest_wait, [this, count = count_of_all_] {
    if (count == count_of_all_) return end_portion();
    // Another reader has used the wait for its portion. That reader waits now as well, so one more
    // wait leaves the loop free for other work.
    limit_ = Timeout::once(longest_wait, [this] { end_portion(); });
  });
}

// The waiting read is the first of the next portion. It is called last, because it may destroy this
// object.
void ReadTurns::end_portion() {
  idle_.disconnect();
  limit_.cancel();
  reads_ = 1;
  begun_ = Clock::now();
  if (auto read = std::exchange(waiting_, nullptr)) read();
}

}  // namespace zemblar
