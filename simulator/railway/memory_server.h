#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "devices/port/socket.h"
#include "runtime/timer.h"
#include "simulator/stations/station_hub.h"

namespace zemblar::simulator {

/// Calls the function once after the delay.
void after_on_clock(std::chrono::milliseconds delay, std::function<void()> call);

/// Connects sockets to a hub through memory. The hub must outlive the server.
///
/// Each operation of a socket completes later, by the clock of runtime/timer, so that under a
/// VirtualClock a conversation is the same each time.
class MemoryServer {
 public:
  using Milliseconds = std::chrono::milliseconds;

  explicit MemoryServer(StationHub& hub) : hub_(hub) {}
  MemoryServer(const MemoryServer&) = delete;
  MemoryServer& operator=(const MemoryServer&) = delete;

  /// A socket that connects to the hub. The server must outlive its use.
  Glib::RefPtr<Socket> socket();

  bool up = true;                      // accepts connections
  std::optional<Socket::Peer> peer{};  // the address that its sockets tell
  Milliseconds latency{1};             // of bytes, each way
  Milliseconds keep_alive{14'000};
  Milliseconds write_time{0};                 // until a write is reported complete
  std::size_t write_limit = 1024;             // bytes that one write takes
  std::vector<Clock::time_point> attempts{};  // to connect

  /// Ends all connections, and refuses new ones.
  void kill();
  /// Disappears without a message, as behind an unplugged cable. On present connections bytes are
  /// lost in both directions, and reading fails after `keep_alive`. Attempts to connect get no
  /// answer until `appear`; then each is answered when the system repeats it.
  void vanish();
  void appear() { away_ = false; }
  /// Sends bytes on the newest connection, unchanged.
  void inject(std::string bytes);

 private:
  class Link;
  class MemorySocket;
  StationHub& hub_;
  std::weak_ptr<Link> newest_;
  bool away_ = false;
};

}  // namespace zemblar::simulator
