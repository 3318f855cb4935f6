#pragma once

#include <string>

namespace zemblar {

/// What switches the track power of one command station off from outside the program: where to
/// send which bytes, and what the answer holds when the power is off.
struct StopOrder {
  std::string host{};  ///< numeric address of a station on the network; empty for a serial line
  unsigned port = 0;
  int line = -1;  ///< open descriptor of the serial line, which stays its driver's
  std::string bytes{};
  std::string confirmation{};

  bool operator==(const StopOrder&) const = default;
};

}  // namespace zemblar
