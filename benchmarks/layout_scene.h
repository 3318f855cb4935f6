#pragma once

#include <stdexcept>
#include <string>

#include "benchmarks/ratio.h"
#include "core/layout.h"
#include "core/status.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"

namespace zemblar::bench {

inline constexpr unsigned functions_per_lok = 3;

/// Fills an empty document with `count` objects: locomotives, each with three functions.
inline void fill_with_loks(std::size_t count) {
  Layout::get().new_document(false);
  for (std::size_t i = 0; i < count; i += 1 + functions_per_lok) {
    auto* lok = Layout::get().get_loks().add(new Lok);
    for (unsigned n = 0; n < functions_per_lok; ++n) lok->add(new Function(lok));
  }
}

inline void open_or_throw(const std::string& bytes, const std::string& path = "bench.zblt") {
  if (!Layout::open_bytes(path, bytes)) throw std::runtime_error(get_status());
}

/// Milliseconds that one call takes.
template <class Body>
double milliseconds(Body&& body) {
  constexpr double per_millisecond = 1e6;
  return nanoseconds(1, body) / per_millisecond;
}

}  // namespace zemblar::bench
