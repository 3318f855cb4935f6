#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>

#include "simulator/soak/soak_evening.h"

namespace zemblar::simulator {

struct Outcome;

/// Evenings at the sample layout, each in a process of its own.
class EveningRuns {
 public:
  void run(const EveningOptions& evening);
  [[nodiscard]] bool good() const { return failures_.empty(); }
  void print(std::ostream& out) const;

 private:
  void judge(const EveningOptions& evening, const Outcome& outcome);
  /// Adds a line of results; returns what is wrong with it, or nothing.
  [[nodiscard]] std::string add(const std::string& kind, std::istream& values);

  std::map<std::string, unsigned> deeds_;
  Causes collisions_;
  double travelled_ = 0;                        // metres
  long most_rise_ = 0;                          // growth of the memory, in kB
  std::chrono::milliseconds longest_return_{};  // until a wished state was reached
  std::string failures_;
};

}  // namespace zemblar::simulator
