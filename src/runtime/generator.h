#pragma once

#include <cstdint>
#include <functional>

#include "runtime/context.h"

namespace zemblar {

/// A coroutine that returns a 32-bit value to its caller at each step. It is independent of the
/// main loop: only `next` continues it, and the body must not wait as a fiber does.
///
/// Its creator owns it and calls `destroy`. The stack has at least 8 KiB.
class generator {
 public:
  /// Makes a generator without starting it. Null when no stack is available.
  [[nodiscard]] static generator* create(std::function<void()> body);

  /// Continues the body until it yields or ends; returns the value that it yields, or 0 at its end.
  /// `yield` returns `value` in the body; the `value` of the first call is unused. Must not be
  /// called after the end. An exception that leaves the body is swallowed and ends it.
  static std::uint32_t next(generator* g, std::uint32_t value);

  /// Call only in a generator's body. Makes `next` return `value`, and returns the argument of the
  /// following `next`.
  static std::uint32_t yield(std::uint32_t value);

  static bool finished(const generator* g);

  /// Frees a generator; does nothing for null. The locals of an unfinished body are not destroyed.
  /// Must not be called from the generator's own body.
  static void destroy(generator* g);

  generator(const generator&) = delete;
  generator& operator=(const generator&) = delete;

 private:
  explicit generator(std::function<void()> code) : body(std::move(code)) {}
  ~generator() = default;

  static void run();

  std::function<void()> body;
  Context* caller = nullptr;  // null while suspended
  Context self;
  std::uint32_t value = 0;
  bool finished_ = false;
};

}  // namespace zemblar
