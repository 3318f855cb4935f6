#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace zemblar {

/// Reads one input. Each program defines it; the layout is an empty document at its start.
void try_input(std::string_view input);

/// What must hold for any input; otherwise this is one to keep.
inline void require(bool condition, const char* what) {
  if (condition) return;
  std::fputs(what, stderr);
  std::abort();
}

/// True if what was heard is the beginning of the whole.
template <typename Events>
bool begins_with(const Events& whole, const Events& part) {
  return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

inline unsigned byte_at(std::string_view bytes, std::size_t place) {
  return static_cast<std::uint8_t>(bytes[place]);
}

}  // namespace zemblar
