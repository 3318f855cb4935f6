#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace zemblar::simulator {

/// The end of a part of a run that had its own process.
struct Outcome {
  std::string said;         ///< its standard error
  bool ended_well = false;  ///< it neither failed nor crashed
};

/// Runs the part in a copy of this process, so that a crash ends only the copy.
[[nodiscard]] Outcome run_in_process(const std::function<void()>& part);

/// The beginning of a line of standard error that holds a result of the part.
inline constexpr std::string_view result_mark = "result ";
/// The text behind the mark in the lines of a part; other lines are passed on.
[[nodiscard]] std::vector<std::istringstream> results_of(const Outcome& outcome);

/// True if the part ended in one of the assertions of block control that impossible reports reach.
[[nodiscard]] bool is_expected_assertion(const Outcome& outcome);

}  // namespace zemblar::simulator
