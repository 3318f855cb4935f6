#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace zemblar::simulator {

/// A run of a sample layout without a user: each train and the scripts are started once; in some,
/// trains are stopped by hand now and then. Over the
/// program's own drivers, a simulated ECoS and a simulated Tessara bus, in virtual time.
struct LapsOptions {
  std::string folder{};  ///< of the sample layouts
  std::string evening{"sample"};
  double hours = 1;
  std::uint64_t seed =
      1;               ///< of the speeds, of the pauses between two starts, and of the detectors
  unsigned order = 0;  ///< of the starts, counted through all of them
};

enum class LapsFault { none, collision, stands, ran_off, too_few, reserved, signal };

struct LapsResult {
  LapsFault fault = LapsFault::none;
  std::string trouble{};  ///< a sentence about the fault
  /// For each train, how often it returned to the block in which it was started.
  std::map<std::string, unsigned> laps{};
  double longest_stand = 0;  ///< seconds, of a train that was started
};

/// The names of the evenings; each is a layout and the trains that are started in it.
[[nodiscard]] std::vector<std::string> evening_names();
/// The number of starting orders.
[[nodiscard]] unsigned count_orders(const std::string& evening);

/// Ends when the time is over, or when a train collides, reaches an end of the track, or stands for
/// more than three minutes. Every train must do ten laps an hour.
[[nodiscard]] LapsResult run_laps(const LapsOptions& options);

}  // namespace zemblar::simulator
