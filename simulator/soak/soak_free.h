#pragma once

#include <cstdint>

#include "simulator/soak/soak_causes.h"

namespace zemblar::simulator {

/// A run of trains at random on a railway with points, a dead end and a crossing of two rings:
/// speeds, reversals, points set anywhere, and false reports.
struct FreeOptions {
  double hours = 1;
  std::uint64_t seed = 1;
  bool faults = false;
};

/// Runs until the time is over, and counts the causes of collisions and of trains that stand for
/// minutes with a speed; after each, the trains are removed and set up again. `unexplained` in the
/// result is a failure, described on the standard error.
///
/// Impossible reports can end the program by an assertion of block control.
[[nodiscard]] Causes run_free(const FreeOptions& options);

}  // namespace zemblar::simulator
