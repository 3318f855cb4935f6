#pragma once

#include <string>

namespace zemblar {

/// The order with which another process can switch the track power of one command station off: the
/// connection, the bytes to send, and the bytes in the answer that confirm it.
struct StopOrder {
  std::string host{};  ///< numeric address of a station on the network; empty for a serial line
  unsigned port = 0;
  int line = -1;  ///< open descriptor of the serial line, owned by its driver; -1 for none
  std::string bytes{};
  std::string confirmation{};

  bool operator==(const StopOrder&) const = default;
};

}  // namespace zemblar
