#pragma once

#include <cstdio>
#include <cstdlib>

namespace zemblar {

/// What must hold for any input; otherwise this is one to keep.
inline void require(bool condition, const char* what) {
  if (condition) return;
  std::fputs(what, stderr);
  std::abort();
}

}  // namespace zemblar
