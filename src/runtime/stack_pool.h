#pragma once

#include <cstddef>

namespace zemblar {

/// The stack of a context. It grows downward from `top`; a guard page lies below `bottom`.
struct Stack {
  void* bottom = nullptr;
  void* top = nullptr;

  explicit operator bool() const { return top != nullptr; }
  std::size_t size() const {
    return static_cast<std::size_t>(static_cast<char*>(top) - static_cast<char*>(bottom));
  }
};

/// Address space that one stack reserves, in bytes, without its guard page. A page takes memory
/// when it is first used, so a context with shallow calls costs a single page.
inline constexpr std::size_t stack_size = 256 * 1024;

/// Stacks for fibers and generators, mapped on demand and kept for reuse, since mapping a new one
/// costs a hundred times as much as reusing one. The kernel's limit on mappings allows some 32,000
/// stacks.
namespace stack_pool {

/// An empty Stack when there is no address space left.
Stack take();
void give_back(Stack stack);

}  // namespace stack_pool
}  // namespace zemblar
