#pragma once

#include <memory>
#include <string>
#include <vector>

#include "devices/port/socket.h"
#include "runtime/timer.h"
#include "simulator/stations/ecos_hub.h"

namespace zemblar::simulator {

/// A simulated ECoS station, and the sockets that lead to it through memory.
///
/// Everything that a socket does completes later, by the clock: under a VirtualClock a
/// conversation always runs the same way.
class MemoryStation {
 public:
  using Milliseconds = std::chrono::milliseconds;

  MemoryStation();
  ~MemoryStation();

  /// A socket whose every connection leads to this station, which must outlive its use.
  Glib::RefPtr<Socket> socket();

  EcosHub hub;
  bool up = true;           // takes new connections
  Milliseconds latency{1};  // of bytes, each way
  Milliseconds keep_alive{14'000};
  Milliseconds write_time{0};                 // until a write is reported complete
  std::size_t write_limit = 1024;             // bytes that one write takes
  std::vector<Clock::time_point> attempts{};  // to connect

  /// Entered at the station itself.
  void add_locomotive(unsigned address, const std::string& name) {
    hub.post(hub.model().add_locomotive(address, name));
  }
  /// What the station last did with it; it must know it.
  [[nodiscard]] const EcosLocomotive& locomotive(unsigned address) const {
    return *hub.model().locomotive(address);
  }
  /// Connections end and new ones are refused.
  void kill();
  /// Goes without a word, as behind a pulled cable: on connections that there are, bytes vanish
  /// both ways, and reading fails when the system has asked in vain for `keep_alive`. Attempts to
  /// connect are not answered. After `appear` those are, each when the system asks the next time.
  void vanish();
  void appear() { away_ = false; }
  /// Bytes that arrive at the newest connection as they are.
  void inject(std::string bytes);
  /// Takes the commands received so far out of the log.
  std::vector<std::string> take_commands();

 private:
  class Link;
  class MemorySocket;
  std::weak_ptr<Link> newest_;
  bool away_ = false;
};

}  // namespace zemblar::simulator
