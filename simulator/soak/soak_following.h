#pragma once

#include <cstdint>
#include <string>

namespace zemblar::simulator {

/// Trains one after another on a ring, wired as block control needs it: every block has an input
/// and is longer than the way that a train needs to stop once it has been reported there.
struct FollowingOptions {
  double hours = 1;
  std::uint64_t seed = 1;
  unsigned trains = 5;
  unsigned blocks = 14;
  /// In mm. The default lets trains of 400 mm/s and 250 mm/s² stop, which takes 320 mm, after a
  /// report of 120 ms and a command of 50 ms.
  double shortest_block = 400;
  double longest_block = 2500;
  /// On a simulated bus, with inputs for all blocks; without any, detectors report at once.
  unsigned readers = 0;
};

struct SoakResult {
  bool good = true;
  std::string report{};
};

/// Runs until the time is over or a train has entered another's block, has come to an end of the
/// track or has not moved for minutes although it should.
[[nodiscard]] SoakResult run_following(const FollowingOptions& options);

}  // namespace zemblar::simulator
