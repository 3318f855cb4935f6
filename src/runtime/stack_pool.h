#pragma once

#include <cstddef>

namespace zemblar {

/// A region that a context runs on. Grows downward from `top`; a guard page lies below `bottom`.
struct Stack {
  void* bottom = nullptr;
  void* top = nullptr;

  explicit operator bool() const { return top != nullptr; }
  std::size_t size() const {
    return static_cast<std::size_t>(static_cast<char*>(top) - static_cast<char*>(bottom));
  }
};

/// Address space that one stack reserves, in bytes, without its guard page. Memory is committed by
/// the page when it is first touched, so a context that stays shallow costs a single page.
inline constexpr std::size_t stack_size = 256 * 1024;

/// Stacks for fibers and generators, mapped on demand and kept for reuse: mapping one afresh costs
/// a hundred times what a reused one does. The kernel's limit on mappings ends near 32,000 stacks.
namespace stack_pool {

/// An empty Stack when there is no address space left.
Stack take();
void give_back(Stack stack);

}  // namespace stack_pool
}  // namespace zemblar
