#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "runtime/timer.h"

namespace zemblar::simulator {

/// Ten trains that two stations drive, an ECoS and a LI-USB or two ECoS, while links fail ten times
/// a minute and wishes come without a pause.
///
/// Always, at each station and for each item of each train, values arrive in the order in which
/// they were wished; some may be skipped, the newest may be repeated. Every few minutes faults and
/// wishes pause: after `allowed` every item that was ever wished has its newest value at every
/// station, power that was wished off is off, links are in service, and the status line tells of no
/// trouble.
struct LinkFaultOptions {
  double hours = 1;
  std::uint64_t seed = 1;
  /// From the moment at which all links could carry until all has arrived.
  std::chrono::milliseconds allowed{5000};
};

struct LinkFaultResult {
  std::string trouble{};  ///< empty when all went as it must; else with the seed and the time
  std::map<std::string, unsigned> faults{};  ///< how often each was there
  std::uint64_t wishes = 0;
  std::uint64_t arrivals = 0;
  unsigned pauses = 0;
  std::chrono::milliseconds longest_return{};  ///< from the end of faults until all has arrived
};

[[nodiscard]] LinkFaultResult run_link_faults(const LinkFaultOptions& options);

}  // namespace zemblar::simulator
