#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "devices/port/socket.h"
#include "runtime/timer.h"
#include "simulator/stations/station_hub.h"

namespace zemblar::simulator {

/// Calls once after a time, by the clock.
void after_on_clock(std::chrono::milliseconds delay, std::function<void()> call);

/// Joins sockets that lead through memory to a hub, which is seen and must live longer.
///
/// Everything that a socket does completes later, by the clock: under a VirtualClock a
/// conversation always runs the same way.
class MemoryServer {
 public:
  using Milliseconds = std::chrono::milliseconds;

  explicit MemoryServer(StationHub& hub) : hub_(hub) {}
  MemoryServer(const MemoryServer&) = delete;
  MemoryServer& operator=(const MemoryServer&) = delete;

  /// A socket whose every connection leads to the hub; the server must outlive its use.
  Glib::RefPtr<Socket> socket();

  bool up = true;           // takes new connections
  Milliseconds latency{1};  // of bytes, each way
  Milliseconds keep_alive{14'000};
  Milliseconds write_time{0};                 // until a write is reported complete
  std::size_t write_limit = 1024;             // bytes that one write takes
  std::vector<Clock::time_point> attempts{};  // to connect

  /// Connections end and new ones are refused.
  void kill();
  /// Goes without a word, as behind a pulled cable: on connections that there are, bytes vanish
  /// both ways, and reading fails when the system has asked in vain for `keep_alive`. Attempts to
  /// connect are not answered. After `appear` those are, each when the system asks the next time.
  void vanish();
  void appear() { away_ = false; }
  /// Bytes that arrive at the newest connection as they are.
  void inject(std::string bytes);

 private:
  class Link;
  class MemorySocket;
  StationHub& hub_;
  std::weak_ptr<Link> newest_;
  bool away_ = false;
};

}  // namespace zemblar::simulator
