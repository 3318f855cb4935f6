#pragma once

#include <cstdint>

#include "simulator/soak/soak_causes.h"

namespace zemblar::simulator {

/// Trains at random on a railway with points, a dead end and a crossing of two rings: speeds,
/// reversals, points set anywhere, and false reports.
struct FreeOptions {
  double hours = 1;
  std::uint64_t seed = 1;
  bool faults = false;
};

/// Runs until the time is over. After a collision, or when a train has stood for minutes although
/// it should move, it is assigned to its cause, and the trains are taken away and set up again.
/// `unexplained` in the result is a failure; what is known about it goes to the standard error.
///
/// Impossible reports can end the program by an assertion of block control.
[[nodiscard]] Causes run_free(const FreeOptions& options);

}  // namespace zemblar::simulator
