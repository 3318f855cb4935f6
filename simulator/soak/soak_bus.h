#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "runtime/timer.h"

namespace zemblar::simulator {

/// Trains over a simulated bus whose master, readers and cable fail at random, one fault after the
/// other, while the program's drivers are in service.
struct BusFaultOptions {
  double hours = 1;
  std::uint64_t seed = 1;
  unsigned readers = 3;
  /// From the end of a fault until all is in service again; unless given, what the wire takes.
  std::optional<std::chrono::milliseconds> allowed{};
};

/// What became of one kind of fault.
struct BusFaultCount {
  unsigned times = 0;
  std::chrono::milliseconds longest_return{};  ///< from its end until all is in service again
};

struct BusFaultResult {
  std::string trouble{};  ///< empty when all went as it must
  std::map<std::string, BusFaultCount> faults{};
  std::chrono::milliseconds longest_allowed{};
};

/// Runs until the time is over, or something does not come back into service in time, or a detector
/// is told otherwise than its rails are.
[[nodiscard]] BusFaultResult run_bus_faults(const BusFaultOptions& options);

}  // namespace zemblar::simulator
