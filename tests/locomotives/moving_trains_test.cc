#include "locomotives/moving_trains.h"

#include "locomotives/last_stop.h"
#include "locomotives/lok.h"
#include "tests/support/fake_station.h"

namespace zemblar::test {
namespace {

using namespace std::chrono_literals;

class MovingTrainsTest : public LayoutTest {
 protected:
  Lok* add_lok(unsigned speed) {
    auto* lok = layout().get_loks().add(new Lok);
    lok->set_speed(speed);
    station->sent();
    return lok;
  }

  VirtualClock clock;
  FakeStation* station = FakeStation::in_service();
  ScopedConnection stops = Decoder::signal_out_of_reach().connect(sigc::ptr_fun(&LastStop::send));
};

TEST_F(MovingTrainsTest, stop_where_they_were_addressed_before_they_are_out_of_reach) {
  auto* other = FakeStation::in_service(false);
  const auto set_address = [](Lok& lok, unsigned address) {
    lok.get_decoders()[0]->set_address(Address(address));
  };
  const std::pair<const char*, std::function<void(Lok&)>> actions[] = {
      {"deleted", [](Lok& lok) { lok.destroy(); }},
      {"decoder removed", [](Lok& lok) { lok.add_decoder(), lok.remove_decoder(0); }},
      {"another address, and another",
       [&](Lok& lok) { set_address(lok, 77), set_address(lok, 78); }},
      {"another device", [&](Lok& lok) { lok.get_decoders()[0]->set_device(other); }},
      {"disabled, and enabled again",
       [](Lok& lok) {
         lok.get_decoders()[0]->set_commands_enabled(false);
         lok.set_speed(lok.get_speed());
         lok.get_decoders()[0]->set_commands_enabled(true);
       }},
  };
  for (const auto& [what, act] : actions) {
    for (const unsigned speed : {60u, 0u}) {
      auto& lok = *add_lok(speed);
      act(lok);
      EXPECT_EQ(station->sent(), speed ? Log{"3 speed 0"} : Log{}) << what << " at " << speed;
      EXPECT_EQ(other->sent(), Log{});
      layout().get_loks().destroy_children();
      station->sent();
      other->sent();
    }
  }
}

TEST_F(MovingTrainsTest, stop_when_their_station_leaves_default_use) {
  add_lok(60);
  add_lok(0);
  auto* own = add_lok(40);
  auto* other = FakeStation::in_service(false);
  own->get_decoders()[0]->set_device(other);
  station->sent();
  stop_before_leaving_default(*other);
  EXPECT_EQ(station->sent(), Log{}) << "it never was in default use";
  stop_before_leaving_default(*station);
  EXPECT_EQ(station->sent(), Log{"3 speed 0"});
  layout().get_default_device().remove_device(station);
  layout().get_default_device().add_device(station);
  Device::signal_in_service().emit(*station);
  EXPECT_EQ(station->sent(), Log{"3 speed 60"}) << "as its throttle still says";
}

TEST_F(MovingTrainsTest, are_waited_for_until_they_stand_or_the_station_is_mute_for_too_long) {
  int done = 0;
  StandStill standing;
  const auto begin = [&] { standing.begin([&] { ++done; }); };
  begin();
  EXPECT_EQ(done, 1) << "nothing drives";

  auto* lok = add_lok(60);
  add_lok(0);
  station->hold_answers = true;
  begin();
  begin();
  EXPECT_EQ(station->sent(), Log{"3 speed 0"});
  EXPECT_EQ(lok->get_speed(), 0u) << "the throttle shows it";
  lok->set_speed(30);  // by a script that still runs
  clock.advance(500ms);
  EXPECT_EQ(lok->get_speed(), 0u);
  EXPECT_EQ(done, 1);
  for (int i = 0; i < 2; ++i) station->answer(), clock.advance(20ms);
  EXPECT_EQ(done, 2) << "the second one was dropped";

  station->hold_answers = false;
  lok->set_speed(60);
  station->hold_answers = true;
  begin();
  clock.advance(900ms);
  EXPECT_EQ(done, 2);
  clock.advance(200ms);
  EXPECT_EQ(done, 3);
  station->hold_answers = false;
  station->answer();
  lok->set_speed(60);
  station->set_active(false);
  layout().get_default_device().remove_device(station);
  begin();
  EXPECT_EQ(done, 4) << "nobody reaches it";
  auto* own = FakeStation::in_service(false);
  lok->get_decoders()[0]->set_device(own);
  lok->set_speed(50);
  own->set_active(false);
  begin();
  EXPECT_EQ(done, 5) << "nor its own station";
}

TEST_F(MovingTrainsTest, are_stopped_again_when_their_station_did_not_get_the_order) {
  const auto attempts = [this](unsigned failures) {
    auto* lok = add_lok(60);
    station->failures = failures;
    LastStop::send_to(*station, *lok->get_decoders()[0].operator->());
    clock.advance(1min);
    return station->sent().size();
  };
  EXPECT_EQ(attempts(0), 1u);
  EXPECT_EQ(attempts(3), 4u);
  EXPECT_EQ(attempts(1000), 20u) << "a station that never obeys is left alone";
}

}  // namespace
}  // namespace zemblar::test
