#pragma once

#include <string>
#include <vector>

#include "simulator/railway/memory_server.h"
#include "simulator/stations/ecos_hub.h"

namespace zemblar::simulator {

/// The hub of a MemoryStation: a base, so that it exists before the server and ends after it.
struct EcosHubOnClock {
  EcosHub hub{after_on_clock};
};

/// A simulated ECoS station, and the sockets that lead to it through memory.
class MemoryStation : public EcosHubOnClock, public MemoryServer {
 public:
  MemoryStation() : MemoryServer(hub) {}

  /// Adds a locomotive at the station's own panel.
  void add_locomotive(unsigned address, const std::string& name) {
    hub.add_locomotive(address, name);
  }
  /// The state of a locomotive, which must be known to the station.
  [[nodiscard]] const EcosLocomotive& locomotive(unsigned address) const {
    return *hub.locomotive(address);
  }
  /// Takes the commands received so far out of the log.
  std::vector<std::string> take_commands() {
    auto commands = hub.log().commands();
    hub.log().clear();
    return commands;
  }
};

}  // namespace zemblar::simulator
