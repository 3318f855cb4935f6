#include "devices/port/socket.h"

#include <giomm/error.h>
#include <giomm/memoryinputstream.h>
#include <giomm/networkaddress.h>
#include <giomm/socketlistener.h>
#include <glibmm/main.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>

#include "core/status.h"
#include "devices/ecos/device_ecos.h"
#include "runtime/fiber.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"
#include "simulator/stations/ecos_station.h"
#include "support/layout_fixture.h"
#include "support/test_decoder.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

/// Turns the real main loop until the condition holds; false after some seconds.
bool wait_until(const std::function<bool()>& condition) {
  bool late = false;
  const auto limit = Timeout::once(5s, [&] { late = true; });
  while (!condition() && !late) Glib::MainContext::get_default()->iteration(true);
  return !late;
}

/// A listening socket on the loopback interface whose far ends a test reads and writes itself.
class Listener {
 public:
  Listener() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    bind(fd_, generic, length);
    listen(fd_, 5);
    getsockname(fd_, generic, &length);
    port_ = ntohs(address.sin_port);
  }
  ~Listener() {
    close(fd_);
    if (peer_ >= 0) close(peer_);
  }
  [[nodiscard]] Glib::RefPtr<Gio::SocketConnectable> address() const {
    return Gio::NetworkAddress::create("localhost", port_);
  }
  [[nodiscard]] std::uint16_t port() const { return port_; }
  /// For another thread: as much as there is room for.
  void send_some(const std::string& text) const {
    [[maybe_unused]] const auto sent =
        ::send(peer_, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  }
  void accept_one() { peer_ = accept(fd_, nullptr, nullptr); }
  void hang_up() { close(std::exchange(peer_, -1)); }
  void send(const std::string& text) const {
    EXPECT_EQ(ssize(text), ::send(peer_, text.data(), text.size(), 0));
  }
  [[nodiscard]] std::string receive() const {
    char buffer[100];
    const auto count = recv(peer_, buffer, sizeof buffer, 0);
    return {buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
  }

 private:
  int fd_ = socket(AF_INET, SOCK_STREAM, 0);
  int peer_ = -1;
  std::uint16_t port_ = 0;
};

/// Runs `body` on a fiber, on the real main loop, to its end.
void on_fiber(const std::function<void()>& body) {
  bool ended = false;
  fiber::spawn([&] {
    body();
    ended = true;
  });
  EXPECT_TRUE(wait_until([&] { return ended; }));
}

/// The code and the text of the error that leaves `operation`.
std::pair<int, std::string> error_of(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const Gio::Error& error) {
    return {error.code(), error.what().raw()};
  }
  return {-1, "no error"};
}

TEST(SocketTest, exchanges_bytes_with_the_far_end) {
  Listener listener;
  on_fiber([&] {
    const auto socket = Socket::create();
    ASSERT_TRUE(socket->connect(listener.address()));
    listener.accept_one();
    EXPECT_EQ(6, socket->write("hello\n"));
    EXPECT_TRUE(socket->flush());
    EXPECT_EQ("hello\n", listener.receive());
    const auto source = Gio::MemoryInputStream::create();
    source->add_data("from a stream", 13, nullptr);
    EXPECT_EQ(13, socket->splice(source, Gio::OUTPUT_STREAM_SPLICE_NONE));
    EXPECT_EQ("from a stream", listener.receive());
    listener.send("abcdef");
    EXPECT_EQ(2, socket->skip(2));
    char buffer[10] = {};
    EXPECT_EQ(0, socket->read(buffer, 0)) << "nothing asked for is nothing read";
    EXPECT_EQ(3, socket->read(buffer, 3));
    EXPECT_EQ(1, socket->read(buffer + 3, 7));
    EXPECT_STREQ("cdef", buffer);
    listener.hang_up();
    EXPECT_EQ(0, socket->read(buffer, 1));
    EXPECT_TRUE(socket->is_connected()) << "what to do about it is the caller's business";
    EXPECT_TRUE(socket->close());
    EXPECT_FALSE(socket->is_connected());
  });
}

/// The option of the TCP socket of this process that is connected to the port.
int tcp_option(std::uint16_t port, int option) {
  for (int fd = 3; fd < 1024; ++fd) {
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &length) != 0) continue;
    if (peer.sin_family != AF_INET || ntohs(peer.sin_port) != port) continue;
    int value = -1;
    length = sizeof value;
    getsockopt(fd, IPPROTO_TCP, option, &value, &length);
    return value;
  }
  return -1;
}

TEST(SocketTest, asks_the_system_to_notice_within_15_s_that_the_far_end_has_gone) {
  Listener listener;
  on_fiber([&] {
    const auto socket = Socket::create();
    ASSERT_TRUE(socket->connect(listener.address()));
    const auto option = [&](int name) { return tcp_option(listener.port(), name); };
    EXPECT_LT(option(TCP_KEEPIDLE) + option(TCP_KEEPCNT) * option(TCP_KEEPINTVL), 15);
    EXPECT_GT(option(TCP_USER_TIMEOUT), 5000);
    EXPECT_LT(option(TCP_USER_TIMEOUT), 15000);
    EXPECT_EQ(option(TCP_NODELAY), 1);
  });
}

// Whoever draws does it in an idle source above all other idle work.
TEST(SocketTest, leaves_time_to_draw_while_the_far_end_floods) {
  Listener listener;
  std::atomic<bool> over = false;
  bool ended = false;
  std::thread flood;
  int drawn = 0;
  std::uint64_t read = 0;
  const ScopedConnection draw = sigc::connection(
      Glib::signal_idle().connect([&] { return ++drawn, true; }, Glib::PRIORITY_HIGH_IDLE + 20));
  fiber::spawn([&] {
    const auto socket = Socket::create();
    socket->connect(listener.address());
    listener.accept_one();
    flood = std::thread([&] {
      const std::string events(60'000, 'e');
      while (!over) listener.send_some(events);
    });
    char buffer[1024];
    while (!over) read += static_cast<std::uint64_t>(socket->read(buffer, sizeof buffer));
    ended = true;
  });
  const auto end = Timeout::once(1s, [&] { over = true; });
  EXPECT_TRUE(wait_until([&] { return over.load(); }));
  flood.join();
  listener.hang_up();
  EXPECT_TRUE(wait_until([&] { return ended; }));
  EXPECT_GE(drawn, 10) << "in a second, beside " << read << " bytes";
  EXPECT_GT(read, 100'000u);
}

TEST(SocketTest, throws_what_stands_in_the_way) {
  Listener listener;
  on_fiber([&] {
    const auto socket = Socket::create();
    char buffer[1];
    const auto source = Gio::MemoryInputStream::create();
    const std::pair<int, std::string> not_connected(Gio::Error::CLOSED, "Not Connected");
    const std::function<void()> operations[] = {[&] { socket->read(buffer, 1); },
                                                [&] { socket->write("x"); },
                                                [&] { socket->skip(1); },
                                                [&] { socket->flush(); },
                                                [&] { socket->close(); },
                                                [&] { socket->splice(source, Gio::OUTPUT_STREAM_SPLICE_NONE); }};
    for (const auto& operation : operations) EXPECT_EQ(not_connected, error_of(operation));

    socket->connect(listener.address());
    const std::pair<int, std::string> connected(Gio::Error::BUSY, "Already Connected");
    EXPECT_EQ(connected, error_of([&] { socket->connect(listener.address()); }));
    socket->close();

    const auto cancelled = Gio::Cancellable::create();
    cancelled->cancel();
    const auto code = [&](auto operation) { return error_of(operation).first; };
    EXPECT_EQ(Gio::Error::CANCELLED, code([&] { socket->connect(listener.address(), cancelled); }));
    EXPECT_FALSE(socket->is_connected());
    const auto nobody = [] {
      Listener gone;
      return gone.address();
    }();
    EXPECT_EQ(Gio::Error::CONNECTION_REFUSED, code([&] { socket->connect(nobody); }));
  });
}

TEST(SocketTest, ends_a_read_that_is_cancelled_closed_or_left_alone) {
  for (const auto* way : {"cancel", "close", "let go"}) {
    SCOPED_TRACE(way);
    Listener listener;
    auto socket = Socket::create();
    const auto cancel = Gio::Cancellable::create();
    int code = 0;
    on_fiber([&] {
      socket->connect(listener.address());
      listener.accept_one();
      fiber::spawn([&, keep = socket] {
        char buffer[1];
        code = error_of([&] { keep->read(buffer, 1, cancel); }).first;
      });
      EXPECT_EQ(5, socket->write("hello")) << "a read under way is not in the way of a write";
      if (way == std::string("close")) {
        socket->close();
      } else {
        if (way == std::string("let go")) socket.reset();
        cancel->cancel();
      }
    });
    EXPECT_TRUE(wait_until([&] { return code != 0; }));
    if (way != std::string("close")) {
      EXPECT_EQ(Gio::Error::CANCELLED, code);
    }
  }
}

TEST(SocketTest, leaves_the_main_loop_alone_while_nobody_takes_what_has_come) {
  Listener listener;
  const auto socket = Socket::create();
  char buffer[1];
  char last = 0;
  on_fiber([&] {
    socket->connect(listener.address());
    listener.accept_one();
    fiber::spawn([&] {
      for (int count = 0; count < 2; ++count) EXPECT_EQ(1, socket->read(buffer, 1));
    });
    EXPECT_EQ(Gio::Error::PENDING, error_of([&] { socket->read(buffer, 1); }).first);
  });
  listener.send("abc");
  EXPECT_TRUE(wait_until([&] { return buffer[0] == 'b'; }));
  const auto loop = Glib::MainContext::get_default();
  EXPECT_TRUE(wait_until([&] { return !loop->iteration(false); })) << "busy with what nobody reads";
  on_fiber([&] {
    EXPECT_EQ(1, socket->read(buffer, 1));
    fiber::spawn([&] { EXPECT_EQ(1, socket->read(&last, 1)); });
    listener.send("d");
  });
  EXPECT_TRUE(wait_until([&] { return last == 'd'; })) << "and waits for more afterwards";
}

TEST(SocketTest, keeps_no_connection_of_an_attempt_that_was_cancelled_meanwhile) {
  int cancelled_count = 0;
  for (int turns = 0; turns < 12; ++turns) {
    SCOPED_TRACE(turns);
    Listener listener;
    const auto socket = Socket::create();
    const auto cancel = Gio::Cancellable::create();
    int code = 0;
    fiber::spawn(
        [&] { code = error_of([&] { socket->connect(listener.address(), cancel); }).first; });
    for (int turn = 0; turn < turns; ++turn) Glib::MainContext::get_default()->iteration(false);
    cancel->cancel();
    EXPECT_TRUE(wait_until([&] { return code != 0; }));
    if (code == Gio::Error::CANCELLED) ++cancelled_count;
    EXPECT_EQ(code != Gio::Error::CANCELLED, socket->is_connected());
  }
  EXPECT_GT(cancelled_count, 0);
}

class LoopbackTest : public test::LayoutTest {};

TEST_F(LoopbackTest, drives_a_station_over_tcp_that_comes_and_goes) {
  EcosStation station;
  const auto port = station.listen();
  station.add_locomotive(3, "Shunter");
  auto* ecos = layout().get_devices().add(new ECoS);
  ecos->set_host("localhost:" + std::to_string(port));
  ASSERT_TRUE(wait_until([&] { return ecos->active(); }));
  const auto decoder = test::TestDecoder::create(*ecos);
  const ScopedConnection resend =
      sigc::connection(Device::signal_in_service().connect([&](Device&) { decoder->send(); }));
  decoder->want_speed(63);
  ASSERT_TRUE(wait_until([&] { return decoder->up_to_date(); }));
  EXPECT_EQ(63u, station.locomotive(3)->speed);

  decoder->want_speed(64);
  station.stop();
  decoder->want_speed(0);
  ASSERT_TRUE(wait_until([&] { return !ecos->active(); }));
  station.listen(port);
  ASSERT_TRUE(wait_until([&] { return decoder->up_to_date(); }));
  EXPECT_EQ(0u, station.locomotive(3)->speed);

  ecos->destroy();
  EXPECT_TRUE(wait_until([&] { return station.client_count() == 0; }));
}

}  // namespace
}  // namespace zemblar
