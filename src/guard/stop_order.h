#pragma once

#include <string>

namespace zemblar {

/// The order that switches the track power of one command station off from outside the program:
/// its way, its bytes, and the bytes in the answer that confirm it.
struct StopOrder {
  std::string host{};  ///< numeric address of a station on the network; empty for a serial line
  unsigned port = 0;
  int line = -1;  ///< open descriptor of the serial line, which stays its driver's
  std::string bytes{};
  std::string confirmation{};

  bool operator==(const StopOrder&) const = default;
};

}  // namespace zemblar
