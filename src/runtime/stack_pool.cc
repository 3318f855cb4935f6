#include "runtime/stack_pool.h"

#include <sys/mman.h>

#include <new>

#include "runtime/sanitizer.h"

#ifdef ZEMBLAR_ASAN
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>
#endif

namespace zemblar::stack_pool {
namespace {

constexpr std::size_t guard_size = 4096;

/// The largest number of spare stacks kept, so that memory is returned after many fibers have run
/// at once.
constexpr std::size_t max_spare = 256;

/// The link in the list of spare stacks. It lies at the top of each, in the page that the next use
/// needs anyway.
struct Spare {
  Spare* next;
};

Spare* spares = nullptr;
std::size_t spare_count = 0;

Spare* link_of(Stack stack) {
  return static_cast<Spare*>(static_cast<void*>(static_cast<char*>(stack.top) - sizeof(Spare)));
}

Stack stack_of(Spare* spare) {
  char* top = static_cast<char*>(static_cast<void*>(spare)) + sizeof(Spare);
  return {top - stack_size, top};
}

Stack map_stack() {
  void* region = mmap(nullptr, guard_size + stack_size, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_STACK, -1, 0);
  if (region == MAP_FAILED) return {};
  if (mprotect(region, guard_size, PROT_NONE) != 0) {
    munmap(region, guard_size + stack_size);
    return {};
  }
  char* bottom = static_cast<char*>(region) + guard_size;
  return {bottom, bottom + stack_size};
}

void unmap_stack(Stack stack) {
  munmap(static_cast<char*>(stack.bottom) - guard_size, guard_size + stack_size);
}

/// The leak checker must search a stack in use: it may have the only pointers to objects that a
/// suspended body owns.
void tell_leak_checker_of_use([[maybe_unused]] Stack stack) {
#ifdef ZEMBLAR_ASAN
  __lsan_register_root_region(stack.bottom, stack.size());
#endif
}

/// Frames that never returned leave their poison in AddressSanitizer's shadow memory.
void tell_sanitizers_of_end([[maybe_unused]] Stack stack) {
#ifdef ZEMBLAR_ASAN
  __lsan_unregister_root_region(stack.bottom, stack.size());
  __asan_unpoison_memory_region(stack.bottom, stack.size());
#endif
}

}  // namespace

Stack take() {
  Stack stack;
  if (spares) {
    stack = stack_of(spares);
    spares = spares->next;
    --spare_count;
  } else {
    stack = map_stack();
  }
  if (stack) tell_leak_checker_of_use(stack);
  return stack;
}

void give_back(Stack stack) {
  tell_sanitizers_of_end(stack);
  if (spare_count == max_spare) {
    unmap_stack(stack);
    return;
  }
  spares = new (link_of(stack)) Spare{spares};
  ++spare_count;
}

}  // namespace zemblar::stack_pool
