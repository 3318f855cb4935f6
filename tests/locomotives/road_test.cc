#include <glib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "core/layout.h"
#include "devices/ecos/device_ecos.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "runtime/timer.h"
#include "simulator/stations/ecos_station.h"
#include "tests/support/layout_fixture.h"

namespace zemblar::test {
namespace {

using namespace std::chrono_literals;
using Commands = std::vector<std::string>;

/// The whole road from a locomotive to a simulated station on the loopback interface, in virtual
/// time.
class Road : public LayoutTest {
 protected:
  ~Road() override {
    layout().new_document(false);
    clock.advance(0ms);
  }

  void connect_station() {
    port = station.listen(port);
    if (!device) {
      device = layout().get_devices().add(new ECoS);
      device->set_host("127.0.0.1:" + std::to_string(port));
    }
    ASSERT_TRUE(until([this] { return device->active(); }));
    station.log().clear();
  }

  bool until(const std::function<bool()>& done) {
    for (int i = 0; i < 20'000; ++i) {
      if (done()) return true;
      clock.advance(1ms);
      g_usleep(20);
    }
    return false;
  }
  /// Runs on until nothing has been out of date for a while.
  bool settled() {
    return until([this] {
      for (auto* child : layout().get_loks()) {
        const auto* lok = dynamic_cast<Lok*>(child);
        if (lok && lok->get_decoders().front()->state().mask != 0) return false;
      }
      return true;
    });
  }
  Lok* add_lok(unsigned address) {
    auto* lok = layout().get_loks().add(new Lok);
    lok->get_decoders().front()->set_address(Address(address));
    return lok;
  }
  Commands commands() {
    EXPECT_TRUE(settled());
    auto received = station.log().commands();
    station.log().clear();
    return received;
  }

  VirtualClock clock;
  EcosStation station;
  std::uint16_t port = 0;
  ECoS* device = nullptr;
};

Commands controlled(const std::string& command) {
  return {"request(1000,control,force)", command, "release(1000,control)"};
}

TEST_F(Road, takes_control_sends_and_gives_control_back) {
  connect_station();
  auto* lok = add_lok(3);
  lok->set_speed(63);
  EXPECT_EQ(
      commands(),
      (Commands{"queryObjects(10,addr)", "create(10,addr[3],name[\"Locomotive 3\"],append)",
                "request(1000,control,force)", "set(1000,speed[63])", "release(1000,control)"}));
  lok->set_direction(Direction::Reverse);
  EXPECT_EQ(commands(), controlled("set(1000,dir[1])"));
  auto* light = lok->add(new Function(lok));
  light->set_function(2);
  light->set_state(true);
  EXPECT_EQ(commands(), controlled("set(1000,func[2,1])"));
  lok->set_emergency_stop(true);
  EXPECT_EQ(commands(), controlled("set(1000,stop)"));
  EXPECT_TRUE(lok->get_emergency_stop());
  lok->set_speed(0);
  EXPECT_EQ(commands(), controlled("set(1000,speed[0])"));
}

// Two stations: the list of more than some sixty locomotives would not fit the driver's buffer.
TEST_F(Road, brings_every_locomotive_to_its_latest_wish_with_fewer_commands_than_changes) {
  connect_station();
  EcosStation other;
  auto* other_device = layout().get_devices().add(new ECoS);
  other_device->set_use_as_default(false);
  other_device->set_host("127.0.0.1:" + std::to_string(other.listen()));
  ASSERT_TRUE(until([&] { return other_device->active(); }));

  constexpr unsigned count = 100;
  constexpr unsigned changes = 50;
  std::vector<Lok*> loks;
  for (unsigned i = 0; i < count; ++i) {
    loks.push_back(add_lok(i + 1));
    if (i % 2) loks.back()->get_decoders().front()->set_device(other_device);
  }
  for (unsigned change = 0; change < changes; ++change) {
    for (unsigned i = 0; i < count; ++i) loks[i]->set_speed((i + change * 7) % 126 + 1);
    // Time for a few exchanges, not for all.
    for (int turn = 0; turn < 50; ++turn) g_main_context_iteration(nullptr, FALSE);
  }
  ASSERT_TRUE(settled());
  std::ptrdiff_t sent = 0;
  for (unsigned i = 0; i < count; ++i) {
    const auto& driven_by = i % 2 ? other : station;
    EXPECT_EQ(driven_by.locomotive(i + 1)->speed, loks[i]->get_speed()) << i;
  }
  for (const auto* one : {&station, &other}) {
    sent += std::ranges::count_if(one->log().commands(), [](const std::string& command) {
      return command.find("speed[") != std::string::npos;
    });
  }
  EXPECT_LT(sent, static_cast<std::ptrdiff_t>(count * changes / 2));
}

TEST_F(Road, comes_back_by_itself_and_sends_what_was_wished_meanwhile_a_stop_included) {
  connect_station();
  auto* moving = add_lok(3);
  moving->set_speed(80);
  ASSERT_TRUE(settled());
  // In a group, with a second one that is told to stop while nobody answers.
  auto* group = layout().get_loks().add(new LokGroup);
  auto* stopped = group->add(new Lok);
  stopped->get_decoders().front()->set_address(Address(200));
  stopped->set_speed(50);
  ASSERT_TRUE(until([&] { return stopped->get_decoders().front()->state().mask == 0; }));

  station.faults().silence();
  moving->set_speed(20);  // in the middle of this command the station goes
  clock.advance(5ms);
  station.stop();
  ASSERT_TRUE(until([this] { return !device->active(); }));
  moving->set_speed(0);
  stopped->set_emergency_stop(true);
  station.faults().clear();
  clock.advance(5s);
  connect_station();
  ASSERT_TRUE(settled());
  ASSERT_TRUE(until([&] { return stopped->get_decoders().front()->state().mask == 0; }));
  EXPECT_EQ(station.locomotive(3)->speed, 0u);
  EXPECT_EQ(station.locomotive(200)->speed, 0u);
}

TEST_F(Road, switches_power_and_follows_the_station) {
  connect_station();
  EXPECT_FALSE(layout().get_track_power());
  layout().set_track_power(true);
  ASSERT_TRUE(until([this] { return layout().get_track_power(); }));
  EXPECT_EQ(station.log().commands(), (Commands{"set(1,go)"}));
  station.press_stop();
  EXPECT_TRUE(until([this] { return !layout().get_track_power(); }));
  device->destroy();
  EXPECT_FALSE(layout().get_track_power());
  device = nullptr;
}

TEST_F(Road, ends_cleanly_when_locomotives_and_station_go_in_the_middle_of_everything) {
  connect_station();
  for (unsigned i = 1; i <= 10; ++i) {
    auto* lok = add_lok(i);
    lok->set_speed(i);
    lok->set_direction(Direction::Reverse);
  }
  station.faults().late = 20ms;
  clock.advance(50ms);
  layout().get_loks().child_at(3)->destroy();
  clock.advance(30ms);
  layout().get_loks().destroy_children();
  clock.advance(30ms);
  device->destroy();
  device = nullptr;
  clock.advance(1s);
}

}  // namespace
}  // namespace zemblar::test
