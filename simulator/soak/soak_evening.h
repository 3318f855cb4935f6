#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

#include "simulator/soak/soak_causes.h"

namespace zemblar::simulator {

/// A run of the shipped sample layout with a simulated user, who does the README's first drive, and
/// then anything that a user can do, at random: throttles, points, signals, scripts, track power,
/// the track editor, Save, New and Open, while the station, the bus and its readers fail. Over the
/// program's own drivers, in virtual time.
///
/// Every few minutes the user and the faults pause: then all wished states must be reached. After a
/// collision the trains are put on the track again.
struct EveningOptions {
  std::string folder{};  ///< of the sample layouts
  double hours = 2;
  std::uint64_t seed = 1;
};

struct EveningResult {
  std::string trouble{};                    ///< empty when all went as it must; else with the time
  std::map<std::string, unsigned> deeds{};  ///< how often each thing was done or went wrong
  Causes collisions{};
  double travelled = 0;        ///< metres, of all trains
  long memory_at_quarter = 0;  ///< resident, in kB
  long memory_at_end = 0;
  std::chrono::milliseconds longest_return{};  ///< from the end of faults until all has arrived
};

/// Ends at the first trouble: a collision without a cause, a wish that is lost, an exception that
/// has reached the main loop. One in a process.
[[nodiscard]] EveningResult run_evening(const EveningOptions& options);

}  // namespace zemblar::simulator
