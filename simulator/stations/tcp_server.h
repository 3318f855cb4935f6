#pragma once

#include <giomm/socket.h>
#include <sigc++/connection.h>

#include <cstdint>
#include <memory>
#include <set>

#include "simulator/stations/station_hub.h"

namespace zemblar::simulator {

/// Connects TCP clients on the loopback interface to a hub, on the default main loop. The hub must
/// outlive the server.
class TcpServer {
 public:
  explicit TcpServer(StationHub& hub);
  ~TcpServer();
  TcpServer(const TcpServer&) = delete;
  TcpServer& operator=(const TcpServer&) = delete;

  /// Listens on 127.0.0.1, on any free port for 0, and returns the port. A port that earlier
  /// connections still occupy can be used again. Throws std::runtime_error.
  std::uint16_t listen(std::uint16_t port);
  /// Closes the listening socket and all connections.
  void stop();
  /// The port listened on, 0 when not listening.
  [[nodiscard]] std::uint16_t port() const { return port_; }

 private:
  class Connection;

  bool accept();

  StationHub& hub_;
  std::set<std::shared_ptr<Connection>> connections_;
  Glib::RefPtr<Gio::Socket> listener_;
  std::uint16_t port_ = 0;
  sigc::connection acceptable_;
};

}  // namespace zemblar::simulator
