#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace zemblar::simulator {

/// Layouts of every kind of object, in the form of files and in that of copies, each damaged at
/// random and opened. A layout is refused with a sentence, and the document that was there stays;
/// or it is a whole one: written, opened and written again it has the same bytes, its diagrams can
/// be painted, it can be driven for some seconds and written once more.
///
/// None may take longer than `longest` from the attempt to open it until all that is done, or make
/// opening take more than `most_memory` times what the honest layout takes for as many bytes.
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
  double most_memory = 0;  ///< times that of the honest layout
};

/// Throws std::runtime_error with the seed of the first layout that is not as it must be.
/// `on_layout` hears each seed before it is tried.
DamageResult run_damage(const DamageOptions& options, void (*on_layout)(std::uint64_t seed));

}  // namespace zemblar::simulator
