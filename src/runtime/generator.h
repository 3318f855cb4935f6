#pragma once

#include <cstdint>
#include <functional>

#include "runtime/context.h"

namespace zemblar {

/// A coroutine that hands a word back to its caller at each step. It takes no part in the main
/// loop: only `next` continues it, and the body must not wait as a fiber does.
///
/// Belongs to whoever created it and ends with `destroy`. The stack has at least 8 KiB.
class generator {
 public:
  /// Makes a generator and does not start it. Null when no stack can be had.
  [[nodiscard]] static generator* create(std::function<void()> body);

  /// Continues the body until it yields or ends, and returns the word it yields; 0 at its end. The
  /// first call's `value` is seen by nobody. Not after the end. An exception that leaves the body
  /// is swallowed and is an end.
  static std::uint32_t next(generator* g, std::uint32_t value);

  /// Only in a generator's body: hands `value` to the caller of `next`; returns the word that the
  /// next `next` brings.
  static std::uint32_t yield(std::uint32_t value);

  static bool finished(const generator* g);

  /// Frees a generator (or null), also before its end; locals of an unfinished body are then not
  /// destroyed. Not from its own body.
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
