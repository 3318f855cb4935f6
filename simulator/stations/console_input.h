#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "simulator/stations/line_splitter.h"

namespace zemblar::simulator {

/// Lines that a person types in the terminal, carried out one by one on the main loop.
///
/// `obey` takes a line and returns what there is to say; what it throws as std::exception is said
/// as well. The end of the input is no end of the program, which may run in the background. One for
/// a process; it lives as long as that.
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
