#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace zemblar::simulator {

/// A run that damages layouts at random and opens them: layouts with every kind of object, as files
/// and as copies. A layout is either refused with a message, and the present document stays; or it
/// opens completely: written, opened and written again it has the same bytes, its diagrams can be
/// painted, and its trains can be driven for some seconds.
///
/// No layout may take longer than `longest` for all of that, and opening it no more than
/// `most_memory` times the memory that the undamaged layout takes for as many bytes.
struct DamageOptions {
  std::uint64_t seed = 1;  ///< of the first one
  unsigned count = 100;
  std::chrono::milliseconds longest{5000};
  double most_memory = 10;
};

struct DamageResult {
  unsigned opened = 0;
  unsigned refused = 0;
  std::chrono::milliseconds longest{};
  double most_memory = 0;  ///< in proportion to the undamaged layout
};

/// Throws std::runtime_error with the seed of the first layout that fails. `on_layout` is called
/// with each seed before its layout is opened.
DamageResult run_damage(const DamageOptions& options, void (*on_layout)(std::uint64_t seed));

}  // namespace zemblar::simulator
