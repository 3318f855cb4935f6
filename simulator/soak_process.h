#pragma once

#include <functional>
#include <string>

namespace zemblar::simulator {

/// How a part of a run has ended that had a process of its own.
struct Outcome {
  std::string said;         ///< its standard error
  bool ended_well = false;  ///< it neither failed nor crashed
};

/// Runs the part in a copy of this process, so that a crash ends nothing but that.
[[nodiscard]] Outcome run_in_process(const std::function<void()>& part);

/// Whether it ended in one of the assertions of block control that impossible reports reach.
[[nodiscard]] bool is_expected_assertion(const Outcome& outcome);

}  // namespace zemblar::simulator
