#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>

#include "simulator/soak/soak_laps.h"

namespace zemblar::simulator {

struct Outcome;

/// Evenings on a sample layout: each starting order with each seed, each in its own process.
class LapRuns {
 public:
  LapRuns(std::string folder, std::string evening);

  void run(unsigned seeds, std::uint64_t first_seed, double hours);
  [[nodiscard]] bool good() const { return good_ == runs_; }
  /// Writes the counts, and a line about each of the first evenings that failed.
  void print(std::ostream& out) const;

 private:
  void run_evening(const LapsOptions& evening);
  void judge(const LapsOptions& evening, const Outcome& outcome);
  void note_failure(const LapsOptions& evening, const std::string& trouble);

  std::string folder_;
  std::string evening_;
  unsigned runs_ = 0;
  unsigned good_ = 0;
  std::map<LapsFault, unsigned> faults_;        // a process that has crashed counts as `none`
  std::map<std::string, unsigned> least_laps_;  // by train, of the good ones
  double longest_stand_ = 0;                    // of the good ones
  std::string failures_;
};

}  // namespace zemblar::simulator
