#pragma once

#include <optional>
#include <string>

namespace zemblar {

/// A running program.
struct Program {
  std::string name;  ///< as the system has it: 15 characters at most
  int process = 0;
};

/// Another program that has a device file open, such as a serial port. Finds only programs that
/// this process may inspect, as a rule those of the same user. Takes some milliseconds.
[[nodiscard]] std::optional<Program> program_using(const std::string& path);

}  // namespace zemblar
