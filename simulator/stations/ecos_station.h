#pragma once

#include <cstdint>

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
/// Runs on the default main loop. The station keeps its state when connections end and when it is
/// stopped; the track power is off at first. One thread.
class EcosStation : public EcosHub {
 public:
  EcosStation();

  /// Starts to listen on 127.0.0.1, on any free port for 0; returns the port. Throws
  /// std::runtime_error when the port is taken.
  std::uint16_t listen(std::uint16_t port = 0) { return server_.listen(port); }
  /// Closes the listening socket and all connections. The same port can be listened on at once.
  void stop() { server_.stop(); }
  /// The port listened on, 0 when not listening.
  [[nodiscard]] std::uint16_t port() const { return server_.port(); }

 private:
  TcpServer server_{*this};
};

}  // namespace zemblar::simulator

namespace zemblar {
using simulator::EcosStation;
}
