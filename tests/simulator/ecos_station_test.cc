#include "simulator/stations/ecos_station.h"

#include <arpa/inet.h>
#include <glibmm/main.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

#include "simulator/stations/station_console.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

// Runs the main loop until the condition holds; false when that takes too long.
bool run_until(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + 5s;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    if (!Glib::MainContext::get_default()->iteration(false)) usleep(200);
  }
  return true;
}

// A client with a plain socket, on the same thread as the station.
class Client {
 public:
  explicit Client(std::uint16_t port) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connected_ = ::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  }
  ~Client() { ::close(socket_); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  bool connected() const { return connected_; }

  void send(std::string_view bytes) {
    ASSERT_EQ(static_cast<ssize_t>(bytes.size()),
              ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL));
  }

  // The next so many messages; less when the station hangs up.
  std::string messages(int count) {
    std::size_t end = 0;
    const auto complete = [&] {
      receive();
      end = 0;
      for (int i = 0; i < count && end != std::string::npos; ++i) end = message_end(end);
      return end != std::string::npos || closed_;
    };
    if (!run_until(complete)) return "timed out after " + received_;
    const auto text = received_.substr(0, end);
    received_.erase(0, end);
    return text;
  }

  bool hung_up() {
    return run_until([this] { return receive(), closed_; });
  }

 private:
  std::size_t message_end(std::size_t from) const {
    const auto last_line = received_.find("\n<END ", from);
    if (last_line == std::string::npos) return last_line;
    const auto end = received_.find('\n', last_line + 1);
    return end == std::string::npos ? end : end + 1;
  }

  void receive() {
    char buffer[4096];
    ssize_t count;
    while ((count = ::recv(socket_, buffer, sizeof buffer, MSG_DONTWAIT)) > 0) {
      received_.append(buffer, static_cast<std::size_t>(count));
    }
    if (count == 0 || errno == ECONNRESET) closed_ = true;
  }

  int socket_;
  bool connected_ = false;
  bool closed_ = false;
  std::string received_;
};

TEST(EcosStation, serves_several_clients_over_loopback) {
  EcosStation station;
  const auto port = station.listen();
  station.add_locomotive(3, "V60");
  Client a(port);
  Client b(port);
  a.send("request(1000,control)\nset(1000,sp");
  EXPECT_EQ("<REPLY request(1000,control)>\r\n<END 0 (OK)>\r\n", a.messages(1));
  a.send("eed[63])\n");
  EXPECT_EQ("<REPLY set(1000,speed[63])>\r\n<END 0 (OK)>\r\n", a.messages(1));
  EXPECT_EQ(63U, station.locomotive(3)->speed);

  b.send("request(1,view)\nrequest(1000,control,force)\n");
  b.messages(2);
  EXPECT_EQ("<EVENT 1000>\r\n1000 msg[CONTROL_LOST]\r\n<END 0 (OK)>\r\n", a.messages(1));
  station.press_go();
  EXPECT_EQ("<EVENT 1>\r\n1 status[GO]\r\n<END 0 (OK)>\r\n", b.messages(1));
}

TEST(EcosStation, keeps_everything_for_a_client_that_reads_slowly) {
  EcosStation station;
  station.listen();
  Client client(station.port());
  for (unsigned i = 1; i <= 2000; ++i) station.add_locomotive(i, std::string(200, 'x'));
  const int count = 30;  // more than the sockets of both sides hold
  for (int i = 0; i < count; ++i) client.send("queryObjects(10,addr,name)\n");
  EXPECT_TRUE(run_until([&] { return station.log().commands().size() == count; }));
  const auto text = client.messages(count);
  EXPECT_NE(std::string::npos, text.rfind("\r\n2999 addr[2000]"));
  EXPECT_GT(text.size(), 6'000'000U);
}

TEST(StationConsole, operates_the_station_by_typed_words) {
  EcosStation station;
  bool ended = false;
  StationConsole console(station, [&] { ended = true; });
  for (const auto* line :
       {"", "go", " locomotive  3:V60 \"Karl\"", "locomotive 1234", "late 50", "pieces 7 3",
        "garbage <x", "fail 42 2 set(", "fail 43 all get(", "refuse-control on", "quit"}) {
    EXPECT_EQ("", console.run(line)) << line;
  }
  EXPECT_TRUE(station.model().track_power());
  EXPECT_EQ("V60 \"Karl\"", station.locomotive(3)->name);
  EXPECT_EQ("Locomotive 1234", station.locomotive(1234)->name);
  EXPECT_EQ(50ms, station.faults().late);
  EXPECT_EQ(7U, station.faults().pieces);
  EXPECT_EQ(3ms, station.faults().gap);
  EXPECT_EQ("<x", station.faults().garbage);
  EXPECT_TRUE(station.faults().refuse_control);
  EXPECT_EQ(42U, station.faults().hit("set(1,go)")->status);
  EXPECT_EQ(43U, station.faults().hit("get(1,status)")->status);
  EXPECT_TRUE(ended);

  for (const auto* bad :
       {"fly", "late", "late soon", "late 5 6", "locomotive x:y", "locomotive 10240:x", "fail 42",
        "fail 42 often", "refuse-control maybe", "go now"}) {
    EXPECT_THROW(console.run(bad), std::invalid_argument) << bad;
  }
  console.run("well");
  EXPECT_EQ(0ms, station.faults().late);
  EXPECT_FALSE(station.faults().hit("get(1,status)"));
}

}  // namespace
}  // namespace zemblar::simulator
