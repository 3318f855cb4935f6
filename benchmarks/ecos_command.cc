// One locomotive command is three exchanges with the station: request, set, release. Held against
// three blocking exchanges on a plain socket with the same peer.

#include <arpa/inet.h>
#include <glib.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks/ratio.h"
#include "core/layout.h"
#include "devices/ecos/device_ecos.h"
#include "locomotives/lok.h"

namespace zemblar::bench {
namespace {

void set_no_delay(int fd) {
  const int on = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

void send_all(int fd, const std::string& text) {
  if (::send(fd, text.data(), text.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("the benchmark's peer has gone");
  }
}

sockaddr_in loopback(in_port_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = port;
  return address;
}

/// Answers each line at once, on threads of its own: the least that a station could do.
class Peer {
 public:
  Peer() : listener_(::socket(AF_INET, SOCK_STREAM, 0)) {
    auto address = loopback(0);
    socklen_t size = sizeof address;
    ::bind(listener_, reinterpret_cast<sockaddr*>(&address), size);
    ::listen(listener_, 4);
    ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = address.sin_port;
    std::thread([listener = listener_] { accept_all(listener); }).detach();
  }
  ~Peer() { ::shutdown(listener_, SHUT_RDWR); }

  [[nodiscard]] in_port_t network_port() const { return port_; }
  [[nodiscard]] std::string host() const { return "127.0.0.1:" + std::to_string(ntohs(port_)); }

 private:
  static void accept_all(int listener) {
    for (int fd = ::accept(listener, nullptr, nullptr); fd >= 0;
         fd = ::accept(listener, nullptr, nullptr)) {
      std::thread([fd] { serve(fd); }).detach();
    }
    ::close(listener);
  }

  static void serve(int fd) {
    set_no_delay(fd);
    std::array<char, 4096> buffer{};
    std::string line;
    for (auto n = ::recv(fd, buffer.data(), buffer.size(), 0); n > 0;
         n = ::recv(fd, buffer.data(), buffer.size(), 0)) {
      for (const char c : std::string_view(buffer.data(), static_cast<std::size_t>(n))) {
        if (c != '\n') {
          line += c;
          continue;
        }
        const auto reply = answer(line);
        if (::send(fd, reply.data(), reply.size(), MSG_NOSIGNAL) < 0) break;
        line.clear();
      }
    }
    ::close(fd);
  }

  static std::string answer(const std::string& line) {
    std::string body;
    if (line == "get(1,status)") body = "1 status[GO]\r\n";
    if (line == "queryObjects(10,addr)") body = "1000 addr[3]\r\n";
    return "<REPLY " + line + ">\r\n" + body + "<END 0 (OK)>\r\n";
  }

  int listener_;
  in_port_t port_ = 0;
};

class PlainClient {
 public:
  explicit PlainClient(const Peer& peer) : fd_(::socket(AF_INET, SOCK_STREAM, 0)) {
    const auto address = loopback(peer.network_port());
    ::connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    set_no_delay(fd_);
  }
  ~PlainClient() { ::close(fd_); }

  void command(unsigned speed) {
    exchange("request(1000,control,force)\n");
    exchange("set(1000,speed[" + std::to_string(speed) + "])\n");
    exchange("release(1000,control)\n");
  }

 private:
  void exchange(const std::string& line) {
    send_all(fd_, line);
    std::array<char, 1024> buffer{};
    std::string reply;
    while (!reply.ends_with("(OK)>\r\n")) {
      const auto n = ::recv(fd_, buffer.data(), buffer.size(), 0);
      if (n <= 0) throw std::runtime_error("the benchmark's peer has gone");
      reply.append(buffer.data(), static_cast<std::size_t>(n));
    }
  }

  int fd_;
};

/// The program's side: a locomotive, its decoder, the default device and the driver.
class Program {
 public:
  explicit Program(const Peer& peer) {
    Layout::get(new Layout).new_document(false);
    device_ = Layout::get().get_devices().add(new ECoS);
    device_->set_host(peer.host());
    lok_ = Layout::get().get_loks().add(new Lok);
    while (!device_->active()) g_main_context_iteration(nullptr, TRUE);
    command(1);  // looks the locomotive up
  }
  ~Program() {
    Layout::get().destroy();
    while (g_main_context_iteration(nullptr, FALSE)) continue;
  }

  void command(unsigned speed) {
    lok_->set_speed(speed);
    const auto& decoder = lok_->get_decoders().front();
    while (decoder->state().mask != 0) g_main_context_iteration(nullptr, TRUE);
  }

 private:
  ECoS* device_;
  Lok* lok_;
};

struct Bench {
  Peer peer;
  PlainClient plain{peer};
  Program program{peer};
  unsigned turn = 0;
  unsigned next_speed() { return ++turn % 126 + 1; }
};

double percentile_99(std::vector<double> times) {
  const auto place = times.begin() + static_cast<std::ptrdiff_t>(times.size() * 99 / 100);
  std::ranges::nth_element(times, place);
  return *place;
}

const Figure mean("ECoS: one locomotive command", "ns", 1.8, [](Effort effort) {
  auto bench = std::make_shared<Bench>();
  return [bench, effort] {
    return versus(
        effort.count(500), [&] { bench->program.command(bench->next_speed()); },
        [&] { bench->plain.command(bench->next_speed()); });
  };
});

/// The 99th percentile of the times that single calls take, in ns.
template <class Body>
double tail_of(std::size_t count, Body&& body) {
  std::vector<double> times(count);
  for (auto& time : times) time = nanoseconds(1, body);
  return percentile_99(std::move(times));
}

const Figure tail("ECoS: one locomotive command, 99th percentile", "ns", 2.3, [](Effort effort) {
  auto bench = std::make_shared<Bench>();
  return [bench, effort] {
    const auto count = effort.count(500);
    Sample sample;
    sample.floor = tail_of(count, [&] { bench->plain.command(bench->next_speed()); });
    sample.figure = tail_of(count, [&] { bench->program.command(bench->next_speed()); });
    return sample;
  };
});

}  // namespace
}  // namespace zemblar::bench
