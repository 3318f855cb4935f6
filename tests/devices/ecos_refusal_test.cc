#include "tests/devices/ecos_fixture.h"

namespace zemblar::test {
namespace {

// --- What a station does not take ---

TEST_F(ECoSTest, lets_everybody_else_go_first_when_a_station_refuses_one_item) {
  auto* ecos = add_started_ecos();
  for (const auto address : {4u, 5u}) station.add_locomotive(address, "Other");
  std::vector<Lok*> loks;
  for (const auto address : {3u, 4u, 5u}) {
    loks.push_back(layout().get_loks().add(new Lok));
    loks.back()->get_decoders().front()->set_address(Address(address));
    loks.back()->set_speed(50);
  }
  clock.advance(100ms);
  station.take_commands();

  station.hub.faults().fail("set(1000,func[2", 25);
  loks[0]->get_decoders().front()->set_function(2, true);
  clock.advance(2ms);
  loks[1]->get_decoders().front()->set_function(1, true);
  loks[1]->set_speed(40);
  loks[2]->set_emergency_stop(true);
  clock.advance(50ms);
  EXPECT_FALSE(ecos->active());
  EXPECT_THAT(get_status().raw(), HasSubstr("refused function 2 of Locomotive 1: 25 (no control)"));
  clock.advance(1100ms);
  EXPECT_TRUE(ecos->active());
  const auto values = values_of(station.take_commands());
  ASSERT_GT(values.size(), 3u);
  EXPECT_EQ((Trace{"set(1000,func[2,1])", "set(1002,stop)", "set(1001,speed[40])",
                   "set(1001,func[1,1])"}),
            Trace(values.begin(), values.begin() + 4));
  EXPECT_EQ(1, std::ranges::count(values, "set(1000,func[2,1])")) << "kept back";
  EXPECT_TRUE(station.locomotive(4).functions[1]);

  // At growing distances, and each time after what others wait for.
  const auto tries_within = [&](auto time) {
    clock.advance(time);
    return std::ranges::count(station.take_commands(), "set(1000,func[2,1])");
  };
  EXPECT_EQ(1, tries_within(2s));
  EXPECT_EQ(3, tries_within(30s));
  EXPECT_LE(tries_within(600s), 11);
  EXPECT_GE(tries_within(600s), 9);
  EXPECT_TRUE(ecos->active());
  EXPECT_NE("", get_status());

  // Another value is a new wish.
  loks[0]->get_decoders().front()->set_function(2, false);
  clock.advance(1s);
  EXPECT_EQ("set(1000,func[2,0])", values_of(station.take_commands()).at(0));
  station.hub.faults().clear();
  loks[0]->get_decoders().front()->set_function(2, true);
  clock.advance(500ms);  // the refusal of the last wish has not expired
  EXPECT_TRUE(station.locomotive(3).functions[2]);
  EXPECT_EQ("", get_status());

  // With another address it is another locomotive.
  station.hub.faults().fail("set(1000,func[5", 25);
  loks[0]->get_decoders().front()->set_function(5, true);
  clock.advance(50ms);
  EXPECT_NE("", get_status());
  loks[0]->get_decoders().front()->set_address(Address(9));
  clock.advance(5s);
  EXPECT_TRUE(station.locomotive(9).functions[5]);
  EXPECT_EQ("", get_status());
}

TEST_F(ECoSTest, names_a_refusal_in_the_words_of_any_encoding) {
  add_started_ecos();
  auto* lok = layout().get_loks().add(new Lok);
  clock.advance(100ms);
  station.hub.faults().silence("set(1000,func[2", 1);
  lok->get_decoders().front()->set_function(2, true);
  clock.advance(50ms);
  station.inject("<REPLY set(1000,func[2,1])>\r\n<END 25 (unm\xf6glich)>\r\n");
  clock.advance(5ms);
  EXPECT_THAT(get_status().raw(), HasSubstr("refused function 2 of Locomotive 1: 25 (unm"));
  EXPECT_TRUE(get_status().validate());
}

TEST_F(ECoSTest, drives_a_locomotive_at_one_station_while_another_refuses_it) {
  MemoryStation second;
  add_started_ecos();
  add_ecos(second);
  auto* lok = layout().get_loks().add(new Lok);
  lok->set_speed(10);
  clock.advance(50ms);
  station.hub.faults().fail("request(1000,control", 25);
  lok->set_speed(50);
  clock.advance(5s);
  lok->set_direction(Direction::Reverse);
  lok->get_decoders().front()->set_function(3, true);
  clock.advance(5s);
  EXPECT_EQ(50u, second.locomotive(3).speed);
  EXPECT_EQ(1u, second.locomotive(3).direction);
  EXPECT_TRUE(second.locomotive(3).functions[3]);
  station.hub.faults().clear();
  station.take_commands();
  clock.advance(125s);
  EXPECT_EQ(50u, station.locomotive(3).speed);
  EXPECT_EQ(1u, station.locomotive(3).direction);
  EXPECT_TRUE(station.locomotive(3).functions[3]);
  const auto values = values_of(station.take_commands());
  EXPECT_EQ(3u, values.size()) << "once each: " << testing::PrintToString(values);

  // Nor does one wait for another that answers nobody.
  station.hub.faults().silence("");
  lok->set_speed(60);
  clock.advance(4s);
  lok->set_direction(Direction::Forwards);
  clock.advance(1s);
  EXPECT_EQ(0u, second.locomotive(3).direction);
  station.hub.faults().clear();
  for (auto* device : layout().get_devices()) dynamic_cast<ECoS*>(device)->reconnect();
  clock.advance(5s);
  EXPECT_EQ(0u, station.locomotive(3).direction);
  EXPECT_EQ(60u, station.locomotive(3).speed);

  station.hub.faults().fail("set(11,", 11, 1);
  layout().get_default_device().run_set_point(5, 1, true);
  clock.advance(5s);
  EXPECT_THAT(get_status().raw(),
              HasSubstr("refused to switch output 1 of the accessory decoder 5"));
  lok->destroy();
  layout().get_devices().destroy_children();
  clock.advance(1s);
}

TEST_F(ECoSTest, stops_others_before_a_locomotive_that_the_station_has_refused) {
  add_started_ecos();
  station.add_locomotive(4, "Other");
  std::vector<Lok*> loks;
  for (const auto address : {3u, 4u}) {
    loks.push_back(layout().get_loks().add(new Lok));
    loks.back()->get_decoders().front()->set_address(Address(address));
    loks.back()->set_speed(50);
  }
  clock.advance(100ms);
  station.hub.faults().fail("request(1000,", 25);
  loks[0]->set_speed(60);
  clock.advance(100ms);
  for (auto* lok : loks) lok->set_emergency_stop(true);
  clock.advance(1s);
  EXPECT_EQ(0u, station.locomotive(4).speed);
}

TEST_F(ECoSTest, tries_a_refused_speed_again_after_the_functions_that_others_wait_for) {
  add_started_ecos();
  for (const auto address : {4u, 5u}) station.add_locomotive(address, "Other");
  std::vector<Decoder*> decoders;
  for (const auto address : {3u, 4u, 5u}) {
    auto* lok = layout().get_loks().add(new Lok);
    decoders.push_back(lok->get_decoders().front().operator->());
    decoders.back()->set_address(Address(address));
    lok->set_speed(50);
  }
  clock.advance(100ms);
  station.hub.faults().fail("set(1000,speed[60", 25);
  decoders[0]->set_speed(60);
  clock.advance(1995ms);
  station.take_commands();
  station.latency = 20ms;
  for (unsigned fn = 1; fn <= 5; ++fn) {
    decoders[1]->set_function(fn, true);
    decoders[2]->set_function(fn, true);
  }
  clock.advance(5s);
  const auto values = values_of(station.take_commands());
  EXPECT_EQ(11u, values.size());
  EXPECT_EQ("set(1000,speed[60])", values.back());
}

TEST_F(ECoSTest, sends_a_stop_again_at_once_that_a_person_has_cut_off) {
  auto* ecos = add_started_ecos();
  auto* lok = layout().get_loks().add(new Lok);
  lok->set_speed(50);
  clock.advance(100ms);
  station.hub.faults().silence("set(1000,stop", 1);
  lok->set_emergency_stop(true);
  clock.advance(3500ms);
  EXPECT_EQ(50u, station.locomotive(3).speed);
  ecos->reconnect();
  clock.advance(100ms);
  EXPECT_EQ(0u, station.locomotive(3).speed);
}

TEST_F(ECoSTest, sends_stops_before_all_that_waits_for_its_turn) {
  auto* ecos = add_started_ecos();
  station.hub.faults().late = 2ms;
  const auto moving = TestDecoder::create(*ecos, 3);
  for (unsigned address = 1; address <= 19; ++address) ecos->run_set_point(address, 1, true);
  clock.advance(3ms);
  moving->want_speed(DecoderUpdate::emergency_stop);
  clock.advance(1ms);
  ecos->set_track_power(true);
  ecos->set_track_power(false);
  clock.advance(1s);
  const auto commands = station.take_commands();
  const auto place = [&](const char* command) {
    return std::ranges::find(commands, command) - commands.begin();
  };
  EXPECT_LE(place("set(1000,stop)"), 6) << "behind the point that was under way";
  EXPECT_LE(place("set(1,stop)"), 6) << "in the next turn";
  EXPECT_EQ(0, std::ranges::count(commands, "set(1,go)")) << "an older wish";
  EXPECT_TRUE(moving->up_to_date());
}

TEST_F(ECoSTest, delivers_the_latest_wish_after_the_station_was_lost_during_a_command) {
  auto* ecos = add_started_ecos();
  const auto decoder = TestDecoder::create(*ecos);
  const auto through_default = TestDecoder::create(layout().get_default_device(), 3);
  for (const auto& [wish, lost_at] :
       {std::pair(80u, 0ms), {0u, 1ms}, {81u, 2ms}, {0u, 3ms}, {82u, 4ms}, {0u, 6ms}, {83u, 8ms}}) {
    for (const auto& driven : {decoder, through_default}) {
      SCOPED_TRACE(testing::Message() << wish << " lost after " << lost_at.count() << " ms");
      resend_in_service(driven);
      driven->want_speed(40);
      clock.advance(lost_at);
      station.kill();
      driven->want_speed(wish);
      clock.advance(3s);
      EXPECT_FALSE(ecos->active());
      EXPECT_FALSE(driven->up_to_date());
      station.up = true;
      clock.advance(2s);
      EXPECT_TRUE(driven->up_to_date());
      EXPECT_EQ(wish, station.locomotive(3).speed);
    }
  }
}

TEST_F(ECoSTest, switches_the_power_off_that_was_wished_while_nobody_could_hear_it) {
  station.hub.press_go();
  auto* ecos = add_started_ecos();
  station.kill();
  clock.advance(10ms);
  layout().set_track_power(false);
  station.up = true;
  clock.advance(2s);
  EXPECT_FALSE(station.hub.model().track_power());

  // On its way there, the wish to switch on must not hide that to switch off; nor the other way.
  ecos->set_track_power(true);
  ecos->set_track_power(false);
  clock.advance(1s);
  EXPECT_FALSE(station.hub.model().track_power());
  station.kill();
  clock.advance(10ms);
  for (const bool on : {false, true}) layout().set_track_power(on);
  station.hub.press_go();
  station.up = true;
  clock.advance(2s);
  EXPECT_TRUE(station.hub.model().track_power()) << "an older wish";
}

TEST_F(ECoSTest, looks_a_locomotive_up_again_that_a_restarted_station_does_not_know) {
  auto* ecos = add_started_ecos();
  const auto decoder = TestDecoder::create(*ecos);
  resend_in_service(decoder);
  decoder->want_speed(10);
  clock.advance(50ms);
  station.hub.model() = simulator::EcosModel();
  decoder->want_speed(20);
  clock.advance(3s);
  EXPECT_TRUE(decoder->up_to_date());
  EXPECT_EQ(20u, station.locomotive(3).speed);
}

}  // namespace
}  // namespace zemblar::test
