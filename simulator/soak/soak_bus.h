#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "runtime/timer.h"

namespace zemblar::simulator {

/// A run of trains over a simulated bus whose master, readers and cable fail at random, one fault
/// after the other, with the program's drivers in service.
struct BusFaultOptions {
  double hours = 1;
  std::uint64_t seed = 1;
  unsigned readers = 3;
  /// The time allowed from the end of a fault until all is in service; by default the time that the
  /// wire needs.
  std::optional<std::chrono::milliseconds> allowed{};
};

/// The results of one kind of fault.
struct BusFaultCount {
  unsigned times = 0;
  std::chrono::milliseconds
      longest_return{};  ///< from the end of the fault until all is in service
};

struct BusFaultResult {
  std::string trouble{};  ///< empty for a good run
  std::map<std::string, BusFaultCount> faults{};
  std::chrono::milliseconds longest_allowed{};
};

/// Runs until the time is over, or something does not come back into service in time, or a detector
/// is told otherwise than its rails are.
[[nodiscard]] BusFaultResult run_bus_faults(const BusFaultOptions& options);

}  // namespace zemblar::simulator
