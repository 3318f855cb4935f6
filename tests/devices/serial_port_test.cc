#include "devices/port/serial_port.h"

#include <fcntl.h>
#include <gio/gio.h>
#include <giomm/error.h>
#include <glibmm/main.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <functional>
#include <vector>

#include "devices/port/port_hold.h"
#include "runtime/fiber.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"
#include "simulator/bus/serial_cable.h"
#include "simulator/stations/pseudo_terminal.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;
using simulator::PseudoTerminal;
using simulator::SerialCable;

/// A read or a write on a fiber of its own, and what came of it.
class Attempt {
 public:
  explicit Attempt(std::function<std::size_t()> operation) {
    fiber::spawn([this, operation = std::move(operation)] {
      try {
        outcome = std::to_string(operation());
      } catch (const Gio::Error& error) {
        outcome = error.what().raw() + " " + std::to_string(static_cast<int>(error.code()));
      }
    });
  }
  std::string outcome = "waiting";
};

std::string closed() {
  return "Closed " + std::to_string(G_IO_ERROR_CLOSED);
}
std::string pending() {
  return "Pending Operation " + std::to_string(G_IO_ERROR_PENDING);
}
std::string cancelled() {
  return "Cancelled 19";
}

/// A port whose settings can be spoilt.
class BarePort : public SerialPort {
 public:
  BarePort(const HWDevice& record, std::unique_ptr<SerialLine> line)
      : SerialPort(record, std::move(line)) {}
  LineSettings& settings() { return settings_; }
};

class SerialPortTest : public testing::Test {
 protected:
  SerialPortTest() { port->set_baud(57600); }

  std::string open(const SerialPort::Cancel& cancel = {}) {
    const Attempt attempt([&] { return port->open(cancel), 0; });
    clock.advance(0ms);
    return attempt.outcome;
  }
  std::function<std::size_t()> reading(const SerialPort::Cancel& cancel = {}) {
    return [this, cancel] { return port->read(buffer, sizeof buffer, cancel); };
  }
  std::function<std::size_t()> writing(const SerialPort::Cancel& cancel = {}) {
    return [this, cancel] { return port->write("hello", 5, cancel); };
  }

  VirtualClock clock;
  SerialCable cable;
  Glib::RefPtr<BarePort> port{new BarePort({.port_name = "memory"}, cable.plug())};
  char buffer[8] = {};
};

TEST_F(SerialPortTest, opens_with_its_settings_and_follows_changes_of_them) {
  port->set_flow(Flow::Soft);
  ASSERT_EQ("0", open());
  EXPECT_TRUE(cable.is_open());
  const auto& settings = cable.settings();
  EXPECT_EQ(57600u, settings.baud);
  EXPECT_EQ(8u, settings.data_bits);
  EXPECT_EQ(1u, settings.stop_bits);
  EXPECT_EQ(Parity::None, settings.parity);
  EXPECT_EQ(Flow::Soft, settings.flow);
  port->set_baud(115200);
  port->set_data_bits(7);
  port->set_stop_bits(2);
  port->set_parity(Parity::Space);
  EXPECT_EQ(115200u, settings.baud);
  EXPECT_EQ(7u, settings.data_bits);
  EXPECT_EQ(2u, settings.stop_bits);
  EXPECT_EQ(Parity::Space, settings.parity);
  EXPECT_EQ("0", open()) << "open already";
}

TEST_F(SerialPortTest, does_not_open_with_settings_out_of_range_or_against_the_system) {
  const LineSettings good{.baud = 9600};
  auto& settings = port->settings();
  settings.baud = 14400;
  EXPECT_EQ("Invalid Baud Rate 0", open());
  settings = {};
  EXPECT_EQ("Invalid Baud Rate 0", open()) << "none was set";
  settings = good;
  settings.data_bits = 4;
  EXPECT_EQ("Invalid Data Bits 0", open());
  settings = good;
  settings.stop_bits = 3;
  EXPECT_EQ("Invalid Stop Bits 0", open());
  settings = good;
  cable.refusal = EACCES;
  EXPECT_EQ("SerialPort::open_async Failed " + std::to_string(EACCES), open());
  cable.refusal = 0;
  const auto cancel = Gio::Cancellable::create();
  cancel->cancel();
  EXPECT_EQ(cancelled(), open(cancel));
  EXPECT_FALSE(port->is_open());
  EXPECT_EQ("0", open());
}

TEST(SerialPortDeathTest, asserts_the_range_of_each_setting) {
  SerialCable cable;
  const auto port = SerialPort::create({}, cable.plug());
  EXPECT_DEATH(port->set_baud(14400), "false");
  EXPECT_DEATH(port->set_data_bits(9), "\\(bits >= 5\\) && \\(bits <= 8\\)");
  EXPECT_DEATH(port->set_stop_bits(0), "\\(bits == 1\\) \\|\\| \\(bits == 2\\)");
  EXPECT_DEATH(port->set_flow(static_cast<Flow>(3)), "mode == Flow::Soft");
}

TEST_F(SerialPortTest, reads_what_is_there_or_waits_a_second_for_a_first_byte) {
  open();
  cable.send("abcdefghij");
  const Attempt at_once(reading());
  EXPECT_EQ("8", at_once.outcome);
  const Attempt rest(reading());
  EXPECT_EQ("2", rest.outcome);

  const Attempt late(reading());
  clock.advance(999ms);
  EXPECT_EQ("waiting", late.outcome);
  cable.send("x");
  EXPECT_EQ("waiting", late.outcome) << "not inside the call of whoever sends";
  clock.advance(0ms);
  EXPECT_EQ("1", late.outcome);

  const Attempt never(reading());
  clock.advance(999ms);
  EXPECT_EQ("waiting", never.outcome);
  clock.advance(1ms);
  EXPECT_EQ("0", never.outcome);
  EXPECT_FALSE(port->busy());
  cable.send("y");
  const Attempt after_silence(reading());
  EXPECT_EQ("1", after_silence.outcome) << "others had their turn meanwhile";
}

TEST_F(SerialPortTest, writes_as_much_as_the_line_takes_and_waits_while_it_is_held_up) {
  open();
  std::string received;
  cable.on_bytes([&](std::string_view bytes) { received += bytes; });
  cable.write_limit = 3;
  const Attempt shortened(writing());
  EXPECT_EQ("3", shortened.outcome);
  cable.hold_up(true);
  const Attempt held(writing());
  clock.advance(5s);
  EXPECT_EQ("waiting", held.outcome);
  cable.hold_up(false);
  clock.advance(0ms);
  EXPECT_EQ("3", held.outcome);
  EXPECT_EQ("helhel", received);
}

TEST_F(SerialPortTest, refuses_what_its_state_does_not_allow) {
  const Attempt early(reading());
  EXPECT_EQ(closed(), early.outcome);
  open();
  const Attempt first(reading());
  const Attempt second(reading());
  const Attempt other(writing());
  EXPECT_EQ(pending(), second.outcome);
  EXPECT_EQ(pending(), other.outcome);
  EXPECT_EQ(pending(), open());
  cable.send("abc");
  clock.advance(0ms);
  EXPECT_EQ("3", first.outcome) << "undisturbed";
}

TEST_F(SerialPortTest, ends_an_operation_that_is_cancelled_closed_or_unplugged) {
  open();
  const auto cancel = Gio::Cancellable::create();
  const Attempt first(reading(cancel));
  cancel->cancel();
  EXPECT_EQ("waiting", first.outcome) << "the cancellable is still at work";
  clock.advance(0ms);
  EXPECT_EQ(cancelled(), first.outcome);
  const Attempt too_late(writing(cancel));
  EXPECT_EQ(cancelled(), too_late.outcome);

  const Attempt cut(reading());
  port->close();
  EXPECT_EQ("0", open()) << "free at once";
  clock.advance(0ms);
  EXPECT_EQ(closed(), cut.outcome);

  int losses = 0;
  port->signal_lost().connect([&] { ++losses; });
  EXPECT_FALSE(port->is_lost());
  const Attempt orphan(reading());
  cable.unplug();
  clock.advance(0ms);
  EXPECT_EQ("GetLastError " + std::to_string(EIO), orphan.outcome);
  const Attempt after(writing());
  EXPECT_EQ("GetLastError " + std::to_string(EIO), after.outcome);
  EXPECT_TRUE(port->is_lost());
  EXPECT_EQ(2, losses);
}

TEST_F(SerialPortTest, needs_no_more_stack_the_more_often_an_operation_ends_at_once) {
  std::vector<std::uintptr_t> depths;
  cable.on_bytes([&](std::string_view) {
    depths.push_back(reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)));
  });
  cable.floods = true;
  const auto cancel = Gio::Cancellable::create();
  cancel->cancel();
  const std::pair<int, std::function<void()>> operations[] = {
      {0, [] {}},  // the depth to begin with
      {200000, [&] { port->read(buffer, 1); }},
      {20000, [&] { port->write("x", 1); }},
      {20000, [&] { port->open(); }},
      {20000, [&] { port->read(buffer, 1, cancel); }},
  };
  for (const auto& [times, operation] : operations) {
    const Attempt attempt([&] {
      port->open();
      for (int i = 0; i < times; ++i) {
        try {
          operation();
        } catch (const Gio::Error&) {
        }
      }
      return port->write("!", 1);
    });
    clock.advance(0ms);
    EXPECT_EQ("1", attempt.outcome);
  }
  const auto [lowest, highest] = std::ranges::minmax(depths);
  EXPECT_LT(highest - lowest, 10000u);
}

TEST_F(SerialPortTest, lets_others_have_their_turn_while_a_line_never_runs_dry) {
  open();
  cable.floods = true;
  const auto flood = [this](const SerialPort::Cancel& cancel) {
    for (int i = 0; i < 5000; ++i) EXPECT_EQ(8u, port->read(buffer, sizeof buffer, cancel));
    return 0;
  };
  int drawn = 0;
  const ScopedConnection drawing =
      Glib::signal_idle().connect([&] { return ++drawn < 3; }, Glib::PRIORITY_HIGH_IDLE + 20);
  const Attempt reads([&] { return flood({}); });
  EXPECT_EQ("waiting", reads.outcome);
  clock.advance(0ms);
  EXPECT_EQ("0", reads.outcome);
  EXPECT_EQ(3, drawn);

  // A port that waits for its turn is busy, and can be cancelled and closed as ever.
  for (const bool closes : {false, true}) {
    const auto cancel = Gio::Cancellable::create();
    const Attempt cut([&] { return flood(cancel); });
    const Attempt other(reading());
    EXPECT_EQ(pending(), other.outcome);
    closes ? port->close() : cancel->cancel();
    clock.advance(0ms);
    EXPECT_EQ(closes ? closed() : cancelled(), cut.outcome);
  }
}

TEST_F(SerialPortTest, drives_and_reads_the_modem_lines_while_open) {
  cable.lines = {.dsr = true, .ri = false, .dcd = true};
  port->set_dtr(true);
  EXPECT_FALSE(port->get_dsr() || port->get_dcd() || cable.dtr()) << "closed";
  open();
  EXPECT_TRUE(port->get_dsr() && port->get_dcd());
  EXPECT_FALSE(port->get_ri() || cable.dtr() || cable.rts());
  port->set_dtr(true);
  port->set_rts(true);
  EXPECT_TRUE(cable.dtr() && cable.rts());
  port->set_flow(Flow::Hard);
  port->set_rts(false);
  EXPECT_TRUE(cable.rts()) << "the handshake's own";
}

/// Leaves no byte of the stack below zero.
__attribute__((noinline)) void soil_stack() {
  volatile char bytes[4096];
  for (auto& byte : bytes) byte = 1;
}

/// Waits for hardware, and ends when it is offered some while another offer begins.
struct ShortLived : sigc::trackable {
  explicit ShortLived(PortOffer& all) : offer(all) {}
  bool claim(SerialPort* port) {
    auto& next = offer;
    delete this;
    soil_stack();
    return next.emit(port);
  }
  PortOffer& offer;
};

TEST(PortOfferTest, asks_whoever_comes_after_one_that_has_ended) {
  PortOffer offer;
  offer.connect(sigc::mem_fun(*new ShortLived(offer), &ShortLived::claim));
  int asked = 0;
  offer.connect([&](SerialPort*) { return ++asked > 0; });
  offer.connect([&](SerialPort*) { return ADD_FAILURE() << "somebody has it", false; });
  EXPECT_TRUE(offer.emit(nullptr));
  EXPECT_EQ(1, asked);
}

TEST(HWDevice, compares_hardware_ids_without_regard_to_case) {
  const HWDevice record{.hardware_ids = {"USB\\VID_0403&PID_D780"}};
  EXPECT_TRUE(record.has_hardware_id("usb\\vid_0403&pid_d780"));
  EXPECT_FALSE(record.has_hardware_id("USB\\VID_0403&PID_D78"));
}

// --- In real time ---

bool wait_until(const std::function<bool()>& condition) {
  bool late = false;
  const auto limit = Timeout::once(5s, [&] { late = true; });
  while (!condition() && !late) Glib::MainContext::get_default()->iteration(true);
  return !late;
}

TEST(BusyLoopTest, reads_no_silence_while_it_waits_for_its_turn) {
  SerialCable cable;
  const auto port = SerialPort::create({}, cable.plug());
  port->set_baud(57600);
  cable.floods = true;
  const ScopedConnection restless =
      Glib::signal_idle().connect([] { return true; }, Glib::PRIORITY_HIGH_IDLE);
  char byte = 0;
  std::size_t bytes = 0;
  const Attempt attempt([&] {
    port->open();
    for (int i = 0; i < 3000; ++i) bytes += port->read(&byte, 1, {}, 1ms);
    return bytes;
  });
  EXPECT_TRUE(wait_until([&] { return attempt.outcome != "waiting"; }));
  EXPECT_EQ("3000", attempt.outcome);
}

// --- Terminals of the system ---

class TtyTest : public testing::Test {
 protected:
  TtyTest() {
    port->set_baud(57600);
    port->set_flow(Flow::Hard);
  }
  std::string run(std::function<std::size_t()> operation) {
    const Attempt attempt(std::move(operation));
    EXPECT_TRUE(wait_until([&] { return attempt.outcome != "waiting"; }));
    return attempt.outcome;
  }
  std::string open(const Glib::RefPtr<SerialPort>& other) {
    return run([&] { return other->open(), 0; });
  }
  [[nodiscard]] termios state() const {
    termios found{};
    const auto fd = ::open(terminal.path().c_str(), O_RDWR | O_NOCTTY);
    EXPECT_EQ(0, tcgetattr(fd, &found));
    ::close(fd);
    return found;
  }

  PseudoTerminal terminal;
  Glib::RefPtr<SerialPort> port = SerialPort::create({.port_name = terminal.path()});
  char buffer[19] = {};
};

TEST_F(TtyTest, carries_bytes_unchanged_and_gives_the_line_back_as_it_was) {
  const auto before = state();
  ASSERT_EQ("0", open(port));
  std::string received;
  terminal.on_bytes([&](std::string_view bytes) { received += bytes; });
  const std::string bytes("\xff\xfe\r\n\x03\x11\0\x7f", 8);
  EXPECT_EQ("8", run([&] { return port->write(bytes.data(), bytes.size()); }));
  EXPECT_TRUE(wait_until([&] { return received.size() >= bytes.size(); }));
  EXPECT_EQ(bytes, received);
  terminal.send(bytes);
  EXPECT_EQ("8", run([&] { return port->read(buffer, sizeof buffer); }));
  EXPECT_EQ(bytes, std::string(buffer, 8));
  EXPECT_FALSE(port->get_dsr()) << "a pseudo-terminal has none";

  port->close();
  const auto after = state();
  EXPECT_EQ(before.c_iflag, after.c_iflag);
  EXPECT_EQ(before.c_lflag, after.c_lflag);
  EXPECT_EQ(before.c_cflag, after.c_cflag);
  EXPECT_EQ(cfgetospeed(&before), cfgetospeed(&after));
}

TEST_F(TtyTest, keeps_the_port_to_itself) {
  ASSERT_EQ("0", open(port));
  const auto other = SerialPort::create({.port_name = terminal.path()});
  other->set_baud(9600);
  EXPECT_EQ("SerialPort::open_async Failed " + std::to_string(EBUSY), open(other));
  port->close();
  EXPECT_EQ("0", open(other));
}

TEST_F(TtyTest, says_which_program_has_the_port) {
  int ready[2];
  ASSERT_EQ(0, pipe(ready));
  const auto other = fork();
  if (other == 0) {
    const auto fd = ::open(terminal.path().c_str(), O_RDWR | O_NOCTTY);
    flock(fd, LOCK_EX);
    static_cast<void>(::write(ready[1], "!", 1));
    while (true) pause();
  }
  ASSERT_EQ(1, ::read(ready[0], buffer, 1));
  EXPECT_EQ("SerialPort::open_async Failed " + std::to_string(EBUSY), open(port));
  const Gio::Error busy(static_cast<Gio::Error::Code>(EBUSY), "");
  EXPECT_THAT(why_not_opened("The bus", *port.operator->(), busy).raw(),
              testing::HasSubstr("(process " + std::to_string(other) + ")"));
  kill(other, SIGKILL);
  waitpid(other, nullptr, 0);
  EXPECT_EQ("0", open(port));
  for (const auto fd : ready) ::close(fd);
}

TEST_F(TtyTest, sees_a_line_that_hangs_up_before_and_during_a_read) {
  ASSERT_EQ("0", open(port));
  const Attempt waiting([&] { return port->read(buffer, sizeof buffer); });
  terminal.hang_up();
  EXPECT_TRUE(wait_until([&] { return waiting.outcome != "waiting"; }));
  const auto gone = "GetLastError " + std::to_string(EIO);
  EXPECT_EQ(gone, waiting.outcome);
  EXPECT_EQ(gone, run([&] { return port->read(buffer, sizeof buffer); }));
  EXPECT_EQ(gone, run([&] { return port->write("x", 1); }));
}

}  // namespace
}  // namespace zemblar
