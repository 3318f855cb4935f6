#include "devices/track_power.h"
#include "tests/support/fake_station.h"

namespace zemblar::test {
namespace {

class TrackPower : public LayoutTest {
 protected:
  TrackPower() {
    layout().connect_property_changed("track-power", [this] { ++told; });
  }
  FakeStation* supply(int support, Object* parent = nullptr) {
    auto* added = (parent ? parent : &layout().get_devices())->add(new FakeStation(support));
    added->set_active(true);
    return added;
  }
  int told = 0;
};

TEST_F(TrackPower, is_on_when_every_device_that_can_switch_it_reports_it) {
  EXPECT_FALSE(layout().get_track_power());
  layout().set_track_power(true);
  EXPECT_FALSE(layout().get_track_power()) << "nobody is there to switch it";

  auto* station = supply(2);
  auto* partly = supply(1);
  auto* nested = supply(2, partly);
  set_status("an old message");
  layout().set_track_power(true);
  EXPECT_TRUE(get_status().empty());
  EXPECT_TRUE(layout().get_track_power());
  EXPECT_EQ(told, 1);
  EXPECT_EQ(partly->sent(), Log{});

  nested->set_track_power(false);
  EXPECT_FALSE(layout().get_track_power());
  layout().set_track_power(false);  // what the layout reads already, but one device differs
  EXPECT_FALSE(station->track_power());
  layout().set_track_power(true);
  nested->set_track_power(false);
  nested->destroy();
  EXPECT_TRUE(layout().get_track_power()) << "the one that was off has gone";
  auto* late = supply(2);
  EXPECT_FALSE(layout().get_track_power()) << "one that is off has come";
  late->destroy();
  station->destroy();
  EXPECT_FALSE(layout().get_track_power());
}

TEST_F(TrackPower, is_shown_as_different_while_a_station_is_out_of_reach) {
  auto& devices = layout().get_devices();
  EXPECT_EQ(power_state(devices), PowerState::no_station);
  supply(2);
  auto* other = supply(2);
  EXPECT_EQ(power_state(devices), PowerState::off);
  layout().set_track_power(true);
  EXPECT_EQ(power_state(devices), PowerState::on);
  other->set_active(false);
  EXPECT_EQ(other->link_state().phase, LinkPhase::lost);
  EXPECT_EQ(power_state(devices), PowerState::differs);
}

}  // namespace
}  // namespace zemblar::test
