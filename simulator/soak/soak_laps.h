#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace zemblar::simulator {

/// A sample layout as an evening sees it: each train is started once, and the scripts, and nobody
/// touches anything after that. Over the program's own drivers, a simulated ECoS and a simulated
/// Tessara bus, in virtual time.
struct LapsOptions {
  std::string folder{};  ///< of the sample layouts
  std::string evening{"sample"};
  double hours = 1;
  std::uint64_t seed =
      1;               ///< of the speeds, of the pauses between two starts, and of the detectors
  unsigned order = 0;  ///< of the starts, counted through all of them
};

enum class LapsFault { none, collision, stands, ran_off, too_few };

struct LapsResult {
  LapsFault fault = LapsFault::none;
  std::string trouble{};  ///< a sentence about it
  /// By train: how often it came back to the block in which it was started. For a train that goes
  /// to and fro that is a shuttle.
  std::map<std::string, unsigned> laps{};
  double longest_stand = 0;  ///< seconds, of a train that was started
};

/// The names of the evenings; each is a layout and the trains that are started in it.
[[nodiscard]] std::vector<std::string> evening_names();
/// How many orders of starting there are.
[[nodiscard]] unsigned count_orders(const std::string& evening);

/// Runs until the time is over or a train has run into another one, has come to an end of the
/// track, or has stood for more than three minutes. At the end every train must have done ten laps
/// an hour.
[[nodiscard]] LapsResult run_laps(const LapsOptions& options);

}  // namespace zemblar::simulator
