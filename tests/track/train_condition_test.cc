// What a person reads about a train, and whether it is true.

#include "track/train_condition.h"

#include "devices/track_power.h"
#include "locomotives/moving_trains.h"
#include "locomotives/script_overlay.h"
#include "tests/support/fake_station.h"
#include "tests/support/small_railway.h"

namespace zemblar::test {
namespace {

class TrainConditionTest : public SmallRailway {
 protected:
  /// A station with a power switch, and a link that can be told to be mute.
  class Station : public FakeStation {
   public:
    explicit Station(const char* name) : Glib::ObjectBase("Station") {
      Layout::get().get_devices().add(this)->set_name(name);
      Layout::get().get_default_device().add_device(this);
      set_active(true);
      track_power_is_on();
    }
    [[nodiscard]] int supports(std::string_view feature) const override {
      return feature.starts_with("DCC") ? 2 : 0;
    }
    [[nodiscard]] bool has_address_for(const DrivenDecoder& decoder) const override {
      return decoder.get_address().get_addr() != 99;
    }
    void lose() { set_link(LinkPhase::lost); }
    void answer_nobody(bool mute = true) {
      set_link(mute ? LinkPhase::waiting_for_answer : LinkPhase::in_service);
    }
  };
  static std::string told(const Lok* lok) { return train_sentence(*lok); }

  VirtualClock clock;
};

TEST_F(TrainConditionTest, tells_why_a_train_is_held_and_at_what_speed_it_really_goes_on) {
  Station station("ECoS");
  const auto zones = row({"A", "B", "C"});
  auto* lok = new_lok_in(zones[0], "Express");
  auto* other = new_lok_in(zones[2], "Local");
  EXPECT_EQ(told(lok), "Stands");
  lok->set_speed(100);
  EXPECT_EQ(told(lok), "Drives at 100");
  at(zones[1]).occupy();
  EXPECT_EQ(told(lok), "Held: C is taken by Local. Drives on by itself at 100.");
  EXPECT_EQ(held_trains(layout().get_loks()), std::vector{lok});
  EXPECT_EQ(zone_note(*zones[0]), "");  // once for a train
  EXPECT_EQ(zone_note(*zones[1]), "Held: C is taken by Local");
  // What is wished under the brake does not count at its release.
  lok->set_speed(0);
  EXPECT_EQ(told(lok),
            "Held: C is taken by Local. Drives on by itself at 100, not at 0. Press Emergency Stop "
            "to keep it here.");
  station.sent();
  at(zones[2]).occupy(false);
  EXPECT_EQ(station.sent(), FakeStation::Log{"3 speed 100"});
  EXPECT_EQ(other->front, nullptr);
  at(zones[2]).occupy();
  zones[2]->replace_lok(nullptr);
  lok->set_emergency_stop(true);
  EXPECT_EQ(told(lok), "Emergency stop: move the scale to drive on");
  lok->set_brake(true);
  EXPECT_EQ(told(lok), "Emergency stop. Held: the track ends ahead, or a point is set against it");
}

TEST_F(TrainConditionTest, tells_what_keeps_the_hardware_from_obeying) {
  auto* lok = new_lok("Express");
  lok->set_speed(60);
  EXPECT_EQ(told(lok), "No command station is in service for it");
  Station one("ECoS"), two("LI-USB");
  EXPECT_EQ(told(lok), "Drives at 60");
  one.track_power_is_off();
  EXPECT_EQ(told(lok), "Track power is off at ECoS");
  EXPECT_EQ(power_state(layout().get_devices()), PowerState::differs);
  two.track_power_is_off();
  EXPECT_EQ(told(lok), "Track power is off");
  lok->set_emergency_stop(true);
  EXPECT_EQ(told(lok), "Track power is off. Emergency stop: move the scale to drive on");
  two.answer_nobody();
  EXPECT_EQ(told(lok), "LI-USB does not answer. Emergency stop: move the scale to drive on");
  one.answer_nobody();
  EXPECT_EQ(told(lok), "No station answers. Emergency stop: move the scale to drive on");
  one.lose();
  EXPECT_EQ(reach_sentence(*lok), "ECoS is lost");
  lok->get_decoders()[0]->set_commands_enabled(false);
  EXPECT_EQ(reach_sentence(*lok), "Its commands are switched off in the track editor");
}

TEST_F(TrainConditionTest, tells_what_a_hand_has_set_and_what_is_left_of_it) {
  Station station("ECoS");
  const auto zones = row({"A", "B"});
  auto* lok = new_lok_in(zones[0]);
  lok->set_speed(60);
  lok->set_brake(true);
  EXPECT_EQ(told(lok), "Held: its brake is on. Release it in the track editor.");
  lok->set_emergency_stop(true);
  lok->set_speed(80);
  lok->set_brake(false);
  EXPECT_EQ(told(lok), "Stands: move the scale to drive on");
  lok->set_speed(70);
  lok->set_brake(true);
  lok->set_speed(30);
  lok->set_brake(false);
  EXPECT_EQ(told(lok), "Drives at 70: move the scale for another speed");
  lok->get_decoders()[0]->set_address(Address(99));
  EXPECT_EQ(told(lok), "The station has no such address");
  FakeStation::in_service();  // has all addresses, and no power to switch
  EXPECT_EQ(told(lok), "Drives at 70: move the scale for another speed");
}

TEST_F(TrainConditionTest, tells_of_scripts_lost_places_and_blocks_that_are_held_for_nobody) {
  Station station("ECoS");
  const auto zones = row({"A", "B"});
  auto* lok = new_lok_in(zones[0], "Express");
  lok->set_speed(100);
  {
    ScriptOverlay slow;
    slow.speeds[lok] = 40;
    lok->apply_speed_overlay();
    EXPECT_EQ(told(lok), "A script drives it at 40");
    slow.speeds[lok] = 0;
    lok->apply_speed_overlay();
    EXPECT_EQ(told(lok), "A script has stopped it");
    slow.remove();
  }
  EXPECT_TRUE(unplaced_trains(layout().get_loks()).empty());
  zones[1]->set_lok(lok);
  EXPECT_EQ(zone_note(*zones[1]), "Reserved for it, and reads free");
  at(zones[0]).occupy(false);
  EXPECT_EQ(place(lok), "nowhere");
  EXPECT_EQ(zone_note(*zones[1]), "Its place is not known");
  EXPECT_EQ(unplaced_trains(layout().get_loks()), std::vector{lok});
  lok->set_speed(0);
  EXPECT_TRUE(unplaced_trains(layout().get_loks()).empty());
}

TEST_F(TrainConditionTest, an_emergency_stop_of_all_reaches_those_first_that_drive) {
  Station station("ECoS");
  auto* standing = new_lok("Standing");
  auto* driving = new_lok("Driving");
  driving->get_decoders()[0]->set_address(Address(4));
  driving->set_speed(60);
  station.sent();
  emergency_stop_all();
  EXPECT_EQ(station.sent(), (FakeStation::Log{"4 stop", "3 stop"}));
  EXPECT_TRUE(standing->get_emergency_stop() && driving->get_emergency_stop());
  // A hand-held throttle may have set one out meanwhile.
  emergency_stop_all();
  EXPECT_EQ(station.sent(), (FakeStation::Log{"3 stop", "4 stop"}));
}

}  // namespace
}  // namespace zemblar::test
