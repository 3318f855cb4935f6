#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <vector>

namespace zemblar::simulator {

/// The other work of the program during the measurement.
enum class Load {
  quiet,
  scanning,           ///< scanning for new devices
  other_locomotives,  ///< 40 other locomotives change their speed twice a second each
  every_packet,       ///< readers report each packet on the track, not only answered ones
};

/// The time from the first current on the detector ahead of a train to the speed 0 at the station,
/// over a simulated bus and the program's drivers, in virtual time.
struct BusLatency {
  using Milliseconds = std::chrono::milliseconds;

  unsigned readers = 1;
  Load load = Load::quiet;
  std::vector<Milliseconds> times{};  ///< in order of length
  /// The longest time that is allowed: the rest of a poll that has just missed it, the pause, one
  /// poll of each reader, a step of a scan, and the station's conversations ahead.
  Milliseconds bound{};
  /// The times that the block stays occupied after the current has ended; in order of length.
  std::vector<Milliseconds> holds{};

  [[nodiscard]] bool good() const { return !times.empty() && times.back() <= bound; }
};

[[nodiscard]] BusLatency measure_bus_latency(unsigned readers, Load load, unsigned samples,
                                             std::uint64_t seed);

void print(const std::vector<BusLatency>& rows, std::ostream& out);

}  // namespace zemblar::simulator
