#pragma once

#include <string_view>

namespace zemblar::simulator {

/// Tells the clients of a station apart.
using StationClient = unsigned;

/// The way to one client: TCP, or anything in memory.
class ClientLink {
 public:
  virtual ~ClientLink() = default;

  /// Takes the bytes, all of them; must not call back into the hub.
  virtual void write(std::string_view bytes) = 0;
  /// The station hangs up: the hub has forgotten the link and does not use it again.
  virtual void close() = 0;
};

/// A simulated station without a network, as transports see it.
///
/// Transports join a link for each connection and hand in the bytes that they receive, in
/// whatever pieces.
class StationHub {
 public:
  virtual ~StationHub() = default;

  /// A new client. The link is seen, not owned, until `leave` or its `close`.
  virtual StationClient join(ClientLink& link) = 0;
  /// The client sent bytes. May end in the link's `close`.
  virtual void receive(StationClient client, std::string_view bytes) = 0;
  /// The client is gone. Unknown clients are ignored.
  virtual void leave(StationClient client) = 0;
  /// Hangs up on all clients.
  virtual void drop_all() = 0;
};

}  // namespace zemblar::simulator
