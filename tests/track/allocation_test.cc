// What the reaction to a report may not cost: a program of its own, since it counts every
// allocation.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "tests/support/small_railway.h"

namespace {
unsigned long allocations = 0;
}

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace zemblar::test {
namespace {

class Allocation : public SmallRailway {
 protected:
  static unsigned long of_report(const Block* block) {
    const auto before = allocations;
    at(block).occupy(at(block).occupied());
    return allocations - before;
  }
};

// The signals themselves allocate a list node for each emission; nothing may come on top of it.
TEST_F(Allocation, of_a_report_that_moves_nobody_is_that_of_a_block_that_nobody_watches) {
  const auto zones = row({"A", "B", "C", "D", "E", "F"});
  const auto unwatched = of_report(zones[5]);
  auto* lok = new_lok_in(zones[2]);
  for (auto* zone : {zones[1], zones[2], zones[3]}) {
    EXPECT_EQ(of_report(zone), unwatched) << zone->get_name();
  }
  EXPECT_EQ(place(lok), "C.left..C.right");
  EXPECT_GT(unwatched, 0u);
}

}  // namespace
}  // namespace zemblar::test
