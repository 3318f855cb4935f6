#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/stations/ecos_hub.h"
#include "simulator/stations/tcp_server.h"

namespace zemblar::simulator {

/// A simulated ECoS command station on the loopback interface, for tests and demonstrations.
///
///     EcosStation station;
///     const auto port = station.listen();
///     ...                                  // a client connects and drives locomotive 3
///     EXPECT_EQ(63u, station.locomotive(3)->speed);
///     station.faults().late = std::chrono::milliseconds(200);
///
/// Runs on the default main loop: nothing happens while that does not run. What the station knows
/// outlives its connections and `stop`; the track power is off at first. One thread.
class EcosStation {
 public:
  EcosStation();

  /// Starts to listen on 127.0.0.1, on any free port for 0; returns the port. Throws
  /// std::runtime_error when the port is taken.
  std::uint16_t listen(std::uint16_t port = 0) { return server_.listen(port); }
  /// Closes the listening socket and all connections. The same port can be listened on at once.
  void stop() { server_.stop(); }
  /// The port listened on, 0 when not listening.
  [[nodiscard]] std::uint16_t port() const { return server_.port(); }
  /// Hangs up on all clients and goes on listening.
  void drop_connections() { hub_.drop_all(); }
  [[nodiscard]] std::size_t connection_count() const { return hub_.client_count(); }

  /// The keys on the station's front: track power, and the emergency that also sets all speeds
  /// to 0.
  void press_go() { hub_.post(hub_.model().press_go()); }
  void press_stop() { hub_.post(hub_.model().press_stop()); }
  void press_emergency() { hub_.post(hub_.model().press_emergency()); }
  [[nodiscard]] bool track_power() const { return hub_.model().track_power(); }

  /// Enters a locomotive; returns its object id. Several may have the same address; address 0 is
  /// a locomotive without one.
  unsigned add_locomotive(unsigned address, std::string name);
  /// The first locomotive of that address as it is now, if there is one.
  [[nodiscard]] std::optional<EcosLocomotive> locomotive(unsigned address) const;
  /// 'g' or 'r' when the output, counted from 1, was switched through the DCC protocol.
  [[nodiscard]] std::optional<char> switch_position(unsigned output) const;

  [[nodiscard]] EcosFaults& faults() { return hub_.faults(); }
  /// All lines in both directions, oldest first.
  [[nodiscard]] std::vector<EcosLogEntry> log() const { return hub_.log().entries(); }
  /// The command lines that were received, without the rest of the log.
  [[nodiscard]] std::vector<std::string> commands() const { return hub_.log().commands(); }
  void clear_log() { hub_.log().clear(); }
  /// Calls the listener with each entry of the log as it is made; an empty one ends that.
  void on_log(std::function<void(const EcosLogEntry&)> listener) {
    hub_.log().on_entry(std::move(listener));
  }

  /// The station without its network, for transports in memory and for the whole model.
  [[nodiscard]] EcosHub& hub() { return hub_; }

 private:
  EcosHub hub_;
  TcpServer server_;
};

}  // namespace zemblar::simulator

namespace zemblar {
using simulator::EcosStation;
}
