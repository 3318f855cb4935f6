#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "simulator/stations/line_splitter.h"

namespace zemblar::simulator {

/// Reads lines that the user types in the terminal, and runs them as commands on the main loop.
///
/// `obey` takes a line and returns the text to print; the text of a std::exception is printed as
/// well. The end of the input does not end the program, which may run in the background. Make one
/// per process; it must exist as long as the process.
class ConsoleInput {
 public:
  using Obey = std::function<std::string(std::string_view line)>;

  explicit ConsoleInput(Obey obey);

 private:
  bool read();
  void carry_out(const std::string& line) const;

  Obey obey_;
  LineSplitter input_;
};

}  // namespace zemblar::simulator
