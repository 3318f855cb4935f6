#include "guard/station_stopper.h"

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <string>
#include <thread>

namespace zemblar::guard {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Longest time of one attempt, from connecting to the confirmation.
constexpr milliseconds attempt_time(1000);
constexpr milliseconds pause(100);

/// True if the descriptor is ready before `end`.
bool wait_for(int descriptor, short what, Clock::time_point end) {
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
    if (left.count() <= 0) return false;
    pollfd watched{descriptor, what, 0};
    const auto ready = ::poll(&watched, 1, static_cast<int>(left.count()));
    if (ready < 0 && errno == EINTR) continue;
    return ready > 0;
  }
}

bool write_all(int descriptor, const std::string& bytes, Clock::time_point end) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    if (!wait_for(descriptor, POLLOUT, end)) return false;
    const auto written = ::write(descriptor, bytes.data() + done, bytes.size() - done);
    if (written > 0) done += static_cast<std::size_t>(written);
    if (written < 0 && errno != EAGAIN && errno != EINTR) return false;
  }
  return true;
}

bool read_confirmation(int descriptor, const std::string& confirmation, Clock::time_point end) {
  std::string heard;
  while (wait_for(descriptor, POLLIN, end)) {
    std::array<char, 512> bytes;
    const auto count = ::read(descriptor, bytes.data(), bytes.size());
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) return false;
    if (count > 0) heard.append(bytes.data(), static_cast<std::size_t>(count));
    if (heard.find(confirmation) != std::string::npos) return true;
  }
  return false;
}

bool exchange(int descriptor, const StopOrder& order, Clock::time_point end) {
  return write_all(descriptor, order.bytes, end) &&
         read_confirmation(descriptor, order.confirmation, end);
}

/// Opens a new connection to the station; -1 if that fails or takes too long.
int connect_to(const StopOrder& order, Clock::time_point end) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const auto port = std::to_string(order.port);
  if (::getaddrinfo(order.host.c_str(), port.c_str(), &hints, &found) != 0) return -1;
  const std::unique_ptr<addrinfo, void (*)(addrinfo*)> address(found, ::freeaddrinfo);
  const int descriptor = ::socket(found->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (descriptor < 0) return -1;
  int error = 0;
  socklen_t size = sizeof error;
  if ((::connect(descriptor, found->ai_addr, found->ai_addrlen) == 0 || errno == EINPROGRESS) &&
      wait_for(descriptor, POLLOUT, end) &&
      ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0) {
    return descriptor;
  }
  ::close(descriptor);
  return -1;
}

bool stop_over_network(const StopOrder& order, Clock::time_point end) {
  const int descriptor = connect_to(order, end);
  if (descriptor < 0) return false;
  const bool stopped = exchange(descriptor, order, end);
  ::close(descriptor);
  return stopped;
}

// Output of the program that is still queued is sent before the order: after half a frame the
// station would take the order for the rest of it.
bool stop_over_line(const StopOrder& order, Clock::time_point end) {
  ::fcntl(order.line, F_SETFL, ::fcntl(order.line, F_GETFL) | O_NONBLOCK);
  ::tcflush(order.line, TCIFLUSH);
  return exchange(order.line, order, end);
}

}  // namespace

bool stop_station(const StopOrder& order, milliseconds limit) {
  const auto end = Clock::now() + limit;
  while (Clock::now() < end) {
    const auto attempt_end = Clock::now() + attempt_time;
    const bool on_line = order.line >= 0;
    if (on_line ? stop_over_line(order, attempt_end) : stop_over_network(order, attempt_end)) {
      return true;
    }
    std::this_thread::sleep_for(pause);
  }
  return false;
}

}  // namespace zemblar::guard
