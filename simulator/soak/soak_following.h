#pragma once

#include <cstdint>
#include <string>

namespace zemblar::simulator {

/// A run of trains that follow each other on a ring, wired as block control needs it: every block
/// has an input, and is longer than the distance in which a reported train stops.
struct FollowingOptions {
  double hours = 1;
  std::uint64_t seed = 1;
  unsigned trains = 5;
  unsigned blocks = 14;
  /// In mm. The default lets trains of 400 mm/s and 250 mm/s² stop, which takes 320 mm, after a
  /// report of 120 ms and a command of 50 ms.
  double shortest_block = 400;
  double longest_block = 2500;
  /// Number of readers on a simulated bus, with inputs for all blocks; for 0, detectors report at
  /// once.
  unsigned readers = 0;
};

struct SoakResult {
  bool good = true;
  std::string report{};
};

/// Ends when the time is over, or when a train enters the block of another one, reaches an end of
/// the track, or stands for minutes with a speed.
[[nodiscard]] SoakResult run_following(const FollowingOptions& options);

}  // namespace zemblar::simulator
