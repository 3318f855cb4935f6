#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "runtime/timer.h"

namespace zemblar::simulator {

/// A run of ten trains that two stations drive, an ECoS and a LI-USB or two ECoS. Links fail ten
/// times a minute, and wishes come without a pause.
///
/// At each station the values of each item of each train must arrive in the order of the wishes;
/// some may be skipped, and the newest may be repeated. Every few minutes faults and wishes pause:
/// after `allowed` each item has its newest value at every station, power that was switched off is
/// off, links are in service, and the status line shows no fault.
struct LinkFaultOptions {
  double hours = 1;
  std::uint64_t seed = 1;
  /// The time from the moment at which all links are usable until all values have arrived.
  std::chrono::milliseconds allowed{5000};
};

struct LinkFaultResult {
  std::string trouble{};  ///< empty when all went as it must; else with the seed and the time
  std::map<std::string, unsigned> faults{};  ///< the number of each fault
  std::uint64_t wishes = 0;
  std::uint64_t arrivals = 0;
  unsigned pauses = 0;
  std::chrono::milliseconds longest_return{};  ///< from the end of faults until all has arrived
};

[[nodiscard]] LinkFaultResult run_link_faults(const LinkFaultOptions& options);

}  // namespace zemblar::simulator
