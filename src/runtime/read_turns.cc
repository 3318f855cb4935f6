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

// Another reader may have had the loop meanwhile.
void ReadTurns::rested(Clock::duration waited) {
  if (std::min(waited, Clock::now() - last_of_all_) >= rest) reads_ = 0;
}

void ReadTurns::wait(std::function<void()> read) {
  // Whoever waited must not be forgotten: its connection has gone, and it ends with an error.
  if (const auto former = std::exchange(waiting_, nullptr)) former();
  waiting_ = std::move(read);
  const auto once = [this] { return end_portion(), false; };
  idle_ = Glib::signal_idle().connect(once, Glib::PRIORITY_LOW);
  limit_ = Timeout::once(longest_wait, [this, count = count_of_all_] {
    if (count == count_of_all_) return end_portion();
    // That was another reader's portion. It waits now as well, and the loop is free for the rest.
    limit_ = Timeout::once(longest_wait, [this] { end_portion(); });
  });
}

// The read that waited is the first of the next portion. It comes last: it may destroy this.
void ReadTurns::end_portion() {
  idle_.disconnect();
  limit_.cancel();
  reads_ = 1;
  begun_ = Clock::now();
  if (auto read = std::exchange(waiting_, nullptr)) read();
}

}  // namespace zemblar
