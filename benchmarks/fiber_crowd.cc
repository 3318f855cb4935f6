// What ten thousand waiting fibers cost: memory, and time in each turn of the main loop.

#include <malloc.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

#include "benchmarks/ratio.h"
#include "runtime/fiber.h"
#include "runtime/timer.h"

namespace zemblar::bench {
namespace {

constexpr std::size_t crowd = 10000;

double resident_kib() {
  std::ifstream statm("/proc/self/statm");
  double total = 0, resident = 0;
  if (!(statm >> total >> resident)) throw std::runtime_error("cannot read /proc/self/statm");
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024;
}

/// Memory that comes with each of `count` suspended fibers. Both the spare stacks and the heap may
/// hold touched pages of the round before, which the heap can be asked to give back.
Sample memory_per_fiber(std::size_t count) {
  std::vector<fiber*> parked(count);
  malloc_trim(0);
  const double before = resident_kib();
  for (fiber*& place : parked) {
    fiber::spawn([&place] { fiber::yield([&place](fiber* f) { place = f; }); });
  }
  const double after = resident_kib();
  for (fiber* f : parked) fiber::resume(f, 0);
  return {(after - before) / static_cast<double>(count), 1};
}

const Figure memory("fiber: memory of a suspended one among 10,000, to 1 KiB", "KiB", 6.0,
                    [](Effort) { return [] { return memory_per_fiber(crowd); }; });

void turn_main_loop() {
  g_main_context_iteration(nullptr, FALSE);
}

/// Fibers asleep for longer than anybody measures, until the end of the scope.
class Sleepers {
 public:
  explicit Sleepers(std::size_t count) : cancellable_(Gio::Cancellable::create()), left_(count) {
    for (std::size_t i = 0; i < count; ++i) {
      fiber::spawn([this] {
        sleep_for(std::chrono::hours(1), cancellable_);
        --left_;
      });
    }
  }
  Sleepers(const Sleepers&) = delete;
  Sleepers& operator=(const Sleepers&) = delete;
  ~Sleepers() {
    cancellable_->cancel();
    while (left_ > 0) turn_main_loop();
  }

 private:
  Glib::RefPtr<Gio::Cancellable> cancellable_;
  std::size_t left_;
};

Sample turns(std::size_t count) {
  Sample sample;
  sample.floor = nanoseconds(count, turn_main_loop);
  const Sleepers sleepers(crowd);
  sample.figure = nanoseconds(count, turn_main_loop);
  return sample;
}

const Figure loop("main loop: a turn with 10,000 fibers asleep, to none", "ns", 1.5,
                  [](Effort effort) {
                    return [count = effort.count(20000)] { return turns(count); };
                  });

}  // namespace
}  // namespace zemblar::bench
