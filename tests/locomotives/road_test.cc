#include <gtest/gtest.h>

#include <functional>

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
    device->set_host("127.0.0.1:" + std::to_string(port));
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
  /// Runs on until nothing is out of date.
  bool settled(const Lok& lok) {
    return until([&] { return lok.get_decoders().front()->state().mask == 0; });
  }
  Commands commands(const Lok& lok) {
    EXPECT_TRUE(settled(lok));
    auto received = station.log().commands();
    station.log().clear();
    return received;
  }

  VirtualClock clock;
  EcosStation station;
  std::uint16_t port = 0;
  ECoS* device = layout().get_devices().add(new ECoS);
};

Commands controlled(const std::string& command) {
  return {"request(1000,control,force)", command, "release(1000,control)"};
}

TEST_F(Road, takes_control_sends_and_gives_control_back) {
  connect_station();
  auto* lok = layout().get_loks().add(new Lok);
  lok->set_speed(63);
  EXPECT_EQ(
      commands(*lok),
      (Commands{"queryObjects(10,addr)", "create(10,addr[3],name[\"Locomotive 3\"],append)",
                "request(1000,control,force)", "set(1000,speed[63])", "release(1000,control)"}));
  lok->set_direction(Direction::Reverse);
  EXPECT_EQ(commands(*lok), controlled("set(1000,dir[1])"));
  auto* light = lok->add(new Function(lok));
  light->set_function(2);
  light->set_state(true);
  EXPECT_EQ(commands(*lok), controlled("set(1000,func[2,1])"));
  lok->set_emergency_stop(true);
  EXPECT_EQ(commands(*lok), controlled("set(1000,stop)"));
  EXPECT_TRUE(lok->get_emergency_stop());
  lok->set_speed(0);
  EXPECT_EQ(commands(*lok), controlled("set(1000,speed[0])"));
}

TEST_F(Road, comes_back_by_itself_and_sends_what_was_wished_meanwhile_a_stop_included) {
  connect_station();
  auto* moving = layout().get_loks().add(new Lok);
  moving->set_speed(80);
  ASSERT_TRUE(settled(*moving));
  // In a group, with a second one that is told to stop while nobody answers.
  auto* group = layout().get_loks().add(new LokGroup);
  auto* stopped = group->add(new Lok);
  stopped->get_decoders().front()->set_address(Address(200));
  stopped->set_speed(50);
  ASSERT_TRUE(settled(*stopped));

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
  ASSERT_TRUE(settled(*moving) && settled(*stopped));
  EXPECT_EQ(station.locomotive(3)->speed, 0u);
  EXPECT_EQ(station.locomotive(200)->speed, 0u);
}

}  // namespace
}  // namespace zemblar::test
