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
  /// What is wrong with it, if anything.
  [[nodiscard]] std::string add(const std::string& kind, std::istream& values);

  std::map<std::string, unsigned> deeds_;
  Causes collisions_;
  double travelled_ = 0;                        // metres
  long most_rise_ = 0;                          // of the memory, in kB
  std::chrono::milliseconds longest_return_{};  // of what was wished
  std::string failures_;
};

}  // namespace zemblar::simulator
