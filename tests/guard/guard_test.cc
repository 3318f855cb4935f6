#include <glibmm/main.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "devices/liusb/device_liusb.h"
#include "guard/station_guard.h"
#include "guard/station_stopper.h"
#include "locomotives/train_guard.h"
#include "simulator/stations/liusb_interface.h"
#include "simulator/stations/pseudo_terminal.h"
#include "tests/support/fake_station.h"

namespace zemblar::guard {
namespace {

using namespace std::chrono_literals;

TEST(GuardMessage, comes_out_as_it_went_in) {
  const Station station{
      .key = "7",
      .name = "Büro\n\"1\"",
      .order = {.host = "127.0.0.1", .port = 15471, .bytes = {"\xff\0\n", 3}, .confirmation = ""}};
  const auto decoded = decode(encode(station));
  ASSERT_TRUE(decoded);
  const auto& copy = std::get<Station>(*decoded);
  EXPECT_EQ(station.key, copy.key);
  EXPECT_EQ(station.name, copy.name);
  EXPECT_EQ(station.order, copy.order);
  EXPECT_EQ("7", std::get<Gone>(*decode(encode(Gone{"7"}))).key);
  EXPECT_TRUE(std::get<Alive>(*decode(encode(Alive{true}))).driving);
  EXPECT_FALSE(std::get<Alive>(*decode(encode(Alive{false}))).driving);
  EXPECT_TRUE(std::holds_alternative<Leave>(*decode(encode(Leave{}))));
  for (const auto* damaged : {"", "leave\nnow\n", "station\n7\n", "stop\n", "gone\n"}) {
    EXPECT_FALSE(decode(damaged)) << damaged;
  }
}

class GuardedLineTest : public test::LayoutTest {
 protected:
  GuardedLineTest() {
    terminal_.on_bytes([this](std::string_view bytes) { hardware_.receive(bytes); });
    device_ = layout().get_devices().add(new LIUSB);
    SerialPortLIUSB::create({.port_name = terminal_.path()})->offer();
    while (!device_->active()) turn();
    device_->set_track_power(true);
    while (!device_->track_power()) turn();
  }

  static void turn() { Glib::MainContext::get_default()->iteration(true); }

  /// The hardware answers meanwhile: it lives in this thread's main loop.
  template <typename Body>
  static void run_beside(Body body) {
    std::atomic<bool> done = false;
    std::thread thread([&] {
      body();
      done = true;
      Glib::MainContext::get_default()->wakeup();
    });
    while (!done) turn();
    thread.join();
  }

  simulator::PseudoTerminal terminal_;
  simulator::LiUsbInterface hardware_{
      [](auto time, auto call) { Timeout::once(time, call).release(); },
      [this](std::string_view bytes) { terminal_.send(bytes); }};
  LIUSB* device_;
};

TEST_F(GuardedLineTest, is_stopped_by_the_guard_when_the_program_has_gone) {
  auto [program, end] = GuardChannel::make_pair();
  StationGuard guard(std::move(end));
  const auto order = device_->stop_order();
  ASSERT_TRUE(order);
  program.send(encode(Station{.key = "1", .name = "LI-USB 1", .order = *order}), order->line);
  program.send("no message", order->line);
  program.send(encode(Alive{true}));
  hardware_.faults.silent = true;
  const auto well = Timeout::once(300ms, [this] { hardware_.faults.silent = false; });
  { const auto gone = std::move(program); }

  ASSERT_EQ(End::lost, guard.watch());
  ASSERT_EQ(1u, guard.stations().size());
  std::vector<Outcome> outcomes;
  run_beside([&] { outcomes = stop_all(guard.stations()); });
  ASSERT_EQ(1u, outcomes.size());
  EXPECT_TRUE(outcomes[0].stopped) << "at the second attempt";
  EXPECT_FALSE(hardware_.station.power);

  device_->set_active(false);
  EXPECT_FALSE(device_->stop_order()) << "the line is closed";
}

TEST_F(GuardedLineTest, is_let_be_when_the_program_takes_leave_or_the_station_has_gone) {
  auto [program, end] = GuardChannel::make_pair();
  StationGuard guard(std::move(end));
  const auto order = device_->stop_order();
  program.send(encode(Station{.key = "1", .order = *order}), order->line);
  program.send(encode(Gone{"1"}));
  program.send(encode(Leave{}));
  { const auto gone = std::move(program); }
  EXPECT_EQ(End::leave, guard.watch());
  EXPECT_TRUE(guard.stations().empty());
}

/// A program that first ends at once as a guard does that has switched track power off. Later ones
/// write down what they are told.
class GuardedTest : public test::LayoutTest {
 protected:
  class Station : public test::FakeStation {
   public:
    Station() : Glib::ObjectBase("GuardedStation"), FakeStation(2) {}
    [[nodiscard]] std::optional<StopOrder> stop_order() const override {
      return StopOrder{.host = "127.0.0.1", .port = 1, .bytes = "stop"};
    }
  };

  GuardedTest() { ::chmod(program_.c_str(), 0700); }

  Station* add_station(const char* name) {
    auto* station = layout().get_devices().add(new Station);
    station->set_name(name);
    station->set_active(true);
    return station;
  }
  /// Waits until the guard has been told so often.
  [[nodiscard]] bool is_told(const std::string& what, int times) const {
    for (int i = 0; i < 500; ++i) {
      const auto told = test::bytes_of(log_);
      int found = 0;
      for (auto at = told.find(what); at != told.npos; at = told.find(what, at + 1)) ++found;
      if (found >= times) return found == times;
      g_usleep(10'000);
    }
    return false;
  }

  VirtualClock clock_;
  std::string log_ = folder.write("log", "");
  std::string program_ = folder.write(
      "guard", "#!/bin/sh\ncd " + folder.path() +
                   "\necho begun >> log\nif mkdir before; then exit 3; fi\nexec cat <&3 >> log\n");
  TrainGuard guard_{program_};
};

TEST_F(GuardedTest, is_told_once_of_each_station_and_is_begun_again_when_it_has_acted) {
  clock_.advance(1s);
  EXPECT_EQ(test::bytes_of(log_), "") << "there is nothing to guard";
  auto* station = add_station("Harbour");
  for (int i = 0; i < 500 && get_status().empty(); ++i) {
    Glib::MainContext::get_default()->iteration(false);
    g_usleep(10'000);
  }
  EXPECT_NE(get_status().find("The guard has switched the track power off"), std::string::npos);
  clock_.advance(5s);
  EXPECT_NE(get_status(), "") << "the track power is still off";
  station->set_track_power(true);
  clock_.advance(1s);
  EXPECT_EQ(get_status(), "");

  EXPECT_TRUE(is_told("begun", 2));
  EXPECT_TRUE(is_told("station", 1));
  auto* other = add_station("Yard");
  station->set_name("Quay");
  clock_.advance(1s);
  EXPECT_TRUE(is_told("station", 3)) << "of the new one, and of the new name";
  other->destroy();
  clock_.advance(1s);
  EXPECT_TRUE(is_told("gone", 1));
  guard_.take_leave();
  EXPECT_TRUE(is_told("leave", 1));
  EXPECT_TRUE(is_told("station", 3));
}

TEST(StationStopper, gives_up_on_a_station_that_does_not_answer) {
  constexpr unsigned nobody = 1;
  EXPECT_FALSE(stop_station({.host = "127.0.0.1", .port = nobody, .bytes = "x"}, 150ms));
  EXPECT_FALSE(stop_station({.host = "no address", .port = nobody, .bytes = "x"}, 150ms));
}

}  // namespace
}  // namespace zemblar::guard
