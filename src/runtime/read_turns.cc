#include "runtime/read_turns.h"

#include <glibmm/main.h>

#include <utility>

namespace zemblar {

void ReadTurns::take(std::function<void()> read) {
  if (!is_used_up()) return read();
  waiting_ = std::move(read);
  when_idle(Glib::PRIORITY_LOW);
  limit_ = Timeout::once(longest_wait, [this] { end_portion(); });
}

// Work of the lowest priority may go on for long, and does not make the next read wait.
bool ReadTurns::is_used_up() {
  if (!idle_.connected()) {
    begun_ = Clock::now();
    reads_ = 0;
    when_idle(Glib::PRIORITY_DEFAULT_IDLE);
  }
  return ++reads_ > most_reads || Clock::now() - begun_ >= portion;
}

void ReadTurns::when_idle(int priority) {
  const auto once = [this] {
    end_portion();
    return false;
  };
  idle_ = Glib::signal_idle().connect(once, priority);
}

// The read that waited is the first of the next portion. It comes last: it may destroy this.
void ReadTurns::end_portion() {
  idle_.disconnect();
  limit_.cancel();
  if (auto read = std::exchange(waiting_, nullptr)) take(std::move(read));
}

}  // namespace zemblar
