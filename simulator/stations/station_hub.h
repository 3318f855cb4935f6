#pragma once

#include <string_view>

namespace zemblar::simulator {

/// Tells the clients of a station apart.
using StationClient = unsigned;

/// The connection to one client, over TCP or through memory.
class ClientLink {
 public:
  virtual ~ClientLink() = default;

  /// Sends all the bytes. Must not call the hub.
  virtual void write(std::string_view bytes) = 0;
  /// Ends the connection. The hub does not use the link any more.
  virtual void close() = 0;
};

/// A simulated station without a network. A transport joins a link for each connection, and passes
/// the received bytes, in any pieces.
class StationHub {
 public:
  virtual ~StationHub() = default;

  /// Adds a client. The link must exist until `leave`, or until the hub calls its `close`.
  virtual StationClient join(ClientLink& link) = 0;
  /// Takes bytes from the client. May call the link's `close`.
  virtual void receive(StationClient client, std::string_view bytes) = 0;
  /// Removes the client. Does nothing for an unknown one.
  virtual void leave(StationClient client) = 0;
  /// Ends all connections.
  virtual void drop_all() = 0;
};

}  // namespace zemblar::simulator
