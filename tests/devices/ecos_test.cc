#include "tests/devices/ecos_fixture.h"

namespace zemblar::test {
namespace {

// --- Commands ---

TEST_F(ECoSTest, takes_control_around_each_command) {
  auto* ecos = add_started_ecos();
  const auto decoder = TestDecoder::create(*ecos);
  const auto expect = [&](const std::string& command) {
    clock.advance(50ms);
    EXPECT_EQ(controlled(command), station.take_commands());
    EXPECT_TRUE(decoder->up_to_date());
  };
  decoder->want_speed(63);
  clock.advance(50ms);
  EXPECT_EQ((Trace{"queryObjects(10,addr)", "request(1000,control,force)", "set(1000,speed[63])",
                   "release(1000,control)"}),
            station.take_commands());
  decoder->want_speed(DecoderUpdate::emergency_stop);
  expect("set(1000,stop)");
  decoder->want_speed(0);
  expect("set(1000,speed[0])");
  decoder->want_direction(Direction::Reverse);
  expect("set(1000,dir[1])");
  decoder->want_direction(Direction::Forwards);
  expect("set(1000,dir[0])");
  decoder->want_function(28, true);
  expect("set(1000,func[28,1])");
  decoder->want_function(28, false);
  expect("set(1000,func[28,0])");
  EXPECT_FALSE(station.locomotive(3).holder) << "given back";

  ecos->run_set_point(5, 1, true);
  ecos->run_set_aspect(5, 1);
  clock.advance(50ms);
  EXPECT_EQ(Trace{"set(11,switch[DCC17g])"}, station.take_commands());
}

TEST_F(ECoSTest, makes_a_locomotive_that_the_station_does_not_have) {
  station.add_locomotive(0, "without an address");
  auto* ecos = add_started_ecos();
  const auto decoder = TestDecoder::create(*ecos, 1200);
  decoder->want_speed(1);
  clock.advance(50ms);
  decoder->want_speed(2);
  clock.advance(50ms);
  EXPECT_EQ(
      (Trace{"queryObjects(10,addr)", "create(10,addr[1200],name[\"Locomotive 1200\"],append)",
             "request(1002,control,force)", "set(1002,speed[1])", "release(1002,control)",
             "request(1002,control,force)", "set(1002,speed[2])", "release(1002,control)"}),
      station.take_commands());
}

TEST_F(ECoSTest, skips_addresses_that_no_decoder_can_have) {
  auto* ecos = add_started_ecos();
  station.hub.faults().silence("queryObjects");
  const auto decoder = TestDecoder::create(*ecos, 10239);
  decoder->want_speed(1);
  clock.advance(10ms);
  station.inject(
      "<REPLY queryObjects(10,addr)>\n7 addr[10240]\n8 addr[0]\n9 addr[99999999999]\n"
      "10 addr\n11 addr[x]\n1000 addr[10239]\n<END 0 (OK)>\n");
  clock.advance(50ms);
  EXPECT_EQ("request(1000,control,force)", station.take_commands()[1]);
}

TEST_F(ECoSTest, sends_the_newest_of_values_that_change_quickly) {
  auto* ecos = add_started_ecos();
  const auto decoder = TestDecoder::create(*ecos);
  for (std::uint32_t speed = 1; speed <= 50; ++speed) decoder->want_speed(speed);
  clock.advance(10ms);
  decoder->want_speed(60);
  clock.advance(100ms);
  const auto commands = station.take_commands();
  EXPECT_EQ(60u, station.locomotive(3).speed);
  EXPECT_LE(commands.size(), 1u + 3 * 3) << testing::PrintToString(commands);
  EXPECT_TRUE(decoder->up_to_date());
}

TEST_F(ECoSTest, turns_a_burst_of_functions_into_one_command_each) {
  add_started_ecos();
  const auto decoder = TestDecoder::create(layout().get_default_device());
  for (unsigned fn = 0; fn <= DecoderUpdate::max_function; ++fn) decoder->want_function(fn, true);
  clock.advance(1s);
  const auto commands = station.take_commands();
  EXPECT_EQ(29, std::ranges::count_if(commands, [](auto& c) { return c.starts_with("set("); }));
  EXPECT_EQ(0x1fffffffu, station.locomotive(3).functions.to_ulong());
  EXPECT_TRUE(decoder->up_to_date());
  EXPECT_LE(decoder->answers.size(), 435u);
}

TEST_F(ECoSTest, drives_through_the_default_device_all_stations_that_are_marked_for_it) {
  MemoryStation second;
  second.add_locomotive(3, "Shunter");
  add_started_ecos();
  auto* other = add_ecos(second);
  const auto decoder = TestDecoder::create(layout().get_default_device());
  const auto speed = [](MemoryStation& at) { return at.locomotive(3).speed; };
  decoder->want_speed(10);
  clock.advance(50ms);
  EXPECT_EQ(10u, speed(station));
  EXPECT_EQ(10u, speed(second));

  std::vector<Glib::ustring> told;
  const ScopedConnection leaving = CommandStation::signal_leaving_default().connect(
      [&](Device& device) { told.push_back("leaves " + device.get_name()); });
  const ScopedConnection coming = Device::signal_in_service().connect(
      [&](Device& device) { told.push_back("comes " + device.get_name()); });
  other->set_use_as_default(false);
  EXPECT_EQ(told, std::vector{"leaves " + other->get_name()});
  decoder->want_speed(20);
  clock.advance(50ms);
  EXPECT_EQ(20u, speed(station));
  EXPECT_EQ(10u, speed(second));

  // A station that joins gets what it has missed, though nothing is out of date.
  auto* lok = layout().get_loks().add(new Lok);
  lok->set_speed(100);
  clock.advance(50ms);
  EXPECT_EQ(10u, speed(second));
  other->set_use_as_default(true);
  clock.advance(50ms);
  EXPECT_EQ(100u, speed(second));
  second.kill();
  clock.advance(50ms);
  lok->set_emergency_stop(true);
  clock.advance(50ms);
  second.up = true;
  second.take_commands();
  station.take_commands();
  clock.advance(1100ms);
  EXPECT_EQ(Trace{"set(1000,stop)"}, values_of(second.take_commands())) << "what it has missed";
  EXPECT_LE(values_of(station.take_commands()).size(), 1u) << "and nothing else to anybody";
  lok->destroy();
  other->set_use_as_default(false);

  station.kill();
  clock.advance(50ms);
  decoder->want_speed(0);
  clock.advance(50ms);
  EXPECT_FALSE(decoder->up_to_date());
  resend_in_service(decoder);
  other->set_use_as_default(true);
  clock.advance(50ms);
  EXPECT_EQ(0u, speed(second)) << "a station that joins gets what nobody took until now";
  layout().get_devices().destroy_children();
  clock.advance(1s);
}

// --- Power ---

TEST_F(ECoSTest, follows_and_switches_track_power) {
  station.hub.press_go();
  auto* ecos = add_started_ecos();
  EXPECT_TRUE(ecos->track_power());
  const auto after = [&](auto action) {
    action();
    clock.advance(10ms);
    return ecos->track_power();
  };
  EXPECT_FALSE(after([&] { station.hub.press_stop(); }));
  EXPECT_FALSE(after([&] { station.inject("<EVENT 1>\n1 name[x]\n<END 0 (OK)>\n"); }));
  EXPECT_FALSE(after([&] { station.inject("<EVENT 1>\n<END 0 (OK)>\n"); }));
  EXPECT_FALSE(after([&] { station.inject("<EVENT 10>\n1 status[GO]\n<END 0 (OK)>\n"); }));
  EXPECT_TRUE(after([&] { ecos->set_track_power(true); }));
  EXPECT_FALSE(after([&] { ecos->set_track_power(false); }));
  EXPECT_EQ((Trace{"set(1,go)", "set(1,stop)"}), station.take_commands());

  station.hub.faults().fail("set(1,go)", 15);
  EXPECT_FALSE(after([&] { ecos->set_track_power(true); }));
  EXPECT_TRUE(ecos->active()) << "power is the one command whose refusal changes nothing";
  EXPECT_EQ(2, ecos->supports("DCC/Power"));
  EXPECT_EQ(1, ecos->supports("DCC"));
  EXPECT_EQ(1, ecos->supports("DCC/Speed"));
  EXPECT_EQ(0, ecos->supports("DCCX"));
  EXPECT_EQ(0, ecos->supports("RailCom"));
}

// --- A stream that misbehaves ---

TEST_F(ECoSTest, works_over_a_bad_line) {
  using Faults = simulator::EcosFaults;
  const std::pair<const char*, std::function<void(Faults&)>> lines[] = {
      {"late", [](Faults& faults) { faults.late = 30ms; }},
      {"single bytes", [](Faults& faults) { faults.pieces = 1; }},
      {"garbage", [](Faults& faults) { faults.garbage = "<\r\n<EVENT 1000>\n1 func[2,1]\n"; }},
      {"short writes", [this](Faults&) { station.write_limit = 3; }},
      // The answer is there before the send is reported complete.
      {"slow sends", [this](Faults&) { station.write_time = 20ms; }},
  };
  auto* ecos = add_started_ecos();
  const auto decoder = TestDecoder::create(*ecos);
  std::uint32_t speed = 0;
  for (const auto& [name, spoil] : lines) {
    SCOPED_TRACE(name);
    station.hub.faults().clear();
    spoil(station.hub.faults());
    decoder->want_speed(++speed);
    clock.advance(2s);
    EXPECT_TRUE(decoder->up_to_date());
    EXPECT_EQ(speed, station.locomotive(3).speed);
  }
  EXPECT_EQ(1u, station.attempts.size());
}

TEST_F(ECoSTest, ignores_answers_to_what_it_did_not_ask) {
  auto* ecos = add_started_ecos();
  station.inject("<REPLY get(1,status)>\n1 status[GO]\n<END 0 (OK)>\n");
  station.hub.faults().silence("queryObjects", 1);
  const auto decoder = TestDecoder::create(*ecos);
  decoder->want_speed(9);
  clock.advance(10ms);
  station.inject("<REPLY queryObjects(10, addr)>\n<END 25 (no)>\n");
  clock.advance(10ms);
  EXPECT_EQ(Trace{"queryObjects(10,addr)"}, station.take_commands());
  station.inject("<REPLY queryObjects(10,addr)>\n1000 addr[3]\n<END 0 (OK)>\n");
  clock.advance(20ms);
  EXPECT_TRUE(decoder->up_to_date());
  EXPECT_EQ(9u, station.locomotive(3).speed);
}

TEST_F(ECoSTest, gives_up_a_message_longer_than_its_buffer_and_says_why) {
  for (unsigned n = 0; n < 100; ++n) station.add_locomotive(100 + n, "Wagon");
  auto* ecos = add_started_ecos();
  clear_status();
  TestDecoder::create(*ecos)->want_speed(1);
  clock.advance(100ms);
  EXPECT_FALSE(ecos->active());
  EXPECT_THAT(get_status().raw(), HasSubstr(ecos->get_name().raw()));
  EXPECT_THAT(get_status().raw(), HasSubstr("longer than 1024 bytes"));
  clock.advance(1s);
  EXPECT_TRUE(ecos->active());
}

// --- Connecting ---

TEST_F(ECoSTest, tries_once_a_second_until_the_station_is_there) {
  station.up = false;
  auto* ecos = add_ecos();
  clock.advance(2980ms);
  EXPECT_EQ((std::vector<long>{0, 1001, 2002}), attempts()) << "a second after each that failed";
  station.up = true;
  clock.advance(100ms);
  EXPECT_TRUE(ecos->active());
  EXPECT_EQ(start_trace, station.take_commands());
}

TEST_F(ECoSTest, asks_a_station_every_second_that_has_gone_without_a_word) {
  auto* ecos = add_started_ecos();
  for (const auto away : {16s, 17s, 19s, 20s, 27s}) {
    station.vanish();
    clock.advance(away + 500ms);
    EXPECT_FALSE(ecos->active());
    station.appear();
    clock.advance(1010ms);
    EXPECT_TRUE(ecos->active()) << away.count();
  }
}

TEST_F(ECoSTest, waits_a_second_after_a_start_that_failed) {
  for (const auto& command : start_trace) {
    SCOPED_TRACE(command);
    station.attempts.clear();
    station.hub.faults().clear();
    station.hub.faults().fail(command, 15, 2);
    auto* ecos = add_ecos();
    EXPECT_FALSE(ecos->active());
    clock.advance(1900ms);
    EXPECT_EQ(2u, station.attempts.size());
    EXPECT_FALSE(ecos->active());
    clock.advance(1s);
    EXPECT_TRUE(ecos->active());
    EXPECT_EQ(3u, station.attempts.size());
    ecos->destroy();
    clock.advance(1s);
  }
}

TEST_F(ECoSTest, falls_out_of_a_start_whose_answer_is_of_no_use_or_whose_station_goes) {
  station.hub.faults().silence("get(1,status)", 1);
  auto* ecos = add_ecos();
  station.inject("<REPLY get(1,status)>\n<END 0 (OK)>\n");
  clock.advance(20ms);
  EXPECT_FALSE(ecos->active());
  station.hub.faults().clear();
  station.hub.faults().drop_after(1);
  clock.advance(1s);
  EXPECT_FALSE(ecos->active());
  station.hub.faults().clear();
  clock.advance(1s);
  EXPECT_TRUE(ecos->active());
}

TEST_F(ECoSTest, does_not_hammer_a_station_that_refuses_control) {
  auto* ecos = add_started_ecos();
  const auto decoder = TestDecoder::create(*ecos);
  resend_in_service(decoder);
  station.hub.faults().refuse_control = true;
  decoder->want_speed(5);
  clock.advance(5s);
  EXPECT_LE(station.attempts.size(), 7u);
  station.hub.faults().clear();
  clock.advance(1100ms);
  EXPECT_TRUE(decoder->up_to_date());
  EXPECT_EQ(5u, station.locomotive(3).speed);
}

// --- Another host ---

TEST_F(ECoSTest, keeps_an_established_connection_when_the_host_changes) {
  station.peer = Socket::Peer{.host = "10.0.0.1", .port = 15471};
  auto* ecos = add_started_ecos();
  int notified = 0;
  ecos->property_host().signal_changed().connect([&] { ++notified; });
  ecos->set_host("localhost");
  ecos->set_host("elsewhere:1234");
  EXPECT_EQ(1, notified);
  clock.advance(10s);
  EXPECT_TRUE(ecos->active());
  EXPECT_EQ(1u, station.attempts.size());
  station.kill();
  clock.advance(10s);
  EXPECT_EQ(11u, station.attempts.size()) << "one fiber tries, and not one for each host";

  // While it waits for its next attempt, a new host is tried at once.
  clock.advance(300ms);
  const auto before = station.attempts.size();
  EXPECT_TRUE(ecos->stop_order()) << "the trains of the lost station drive on";
  ecos->set_host("third");
  EXPECT_FALSE(ecos->stop_order());
  clock.advance(1ms);
  EXPECT_EQ(before + 1, station.attempts.size());
  station.up = true;
  clock.advance(2s);
  EXPECT_TRUE(ecos->active());
  ASSERT_TRUE(ecos->stop_order());
  EXPECT_EQ("10.0.0.1", ecos->stop_order()->host);
  station.peer.reset();
  ecos->reconnect();
  clock.advance(20ms);
  EXPECT_FALSE(ecos->stop_order()) << "not that of another connection";
}

TEST_F(ECoSTest, tries_another_host_at_once_and_asks_it_for_its_own_numbers) {
  auto* ecos = add_ecos();
  const std::function<void()> begins[] = {[&] { ecos->set_host("corrected"); },
                                          [&] { ecos->reconnect(); }};
  for (const auto& begin_anew : begins) {
    station.hub.faults().silence("request(1,view)");
    station.hub.drop_all();
    clock.advance(60s);
    EXPECT_EQ(LinkPhase::waiting_for_answer, ecos->link_state().phase);
    EXPECT_THAT(get_status().raw(), HasSubstr("does not answer"));
    station.hub.faults().clear();
    begin_anew();
    clock.advance(20ms);
    EXPECT_EQ(LinkPhase::in_service, ecos->link_state().phase);
  }

  const auto decoder = TestDecoder::create(*ecos);
  resend_in_service(decoder);
  const auto asks_for_numbers = [&](std::uint32_t speed) {
    station.take_commands();
    decoder->want_speed(speed);
    clock.advance(3s);
    EXPECT_EQ(speed, station.locomotive(3).speed);
    return std::ranges::count(station.take_commands(), "queryObjects(10,addr)") > 0;
  };
  EXPECT_TRUE(asks_for_numbers(1));
  station.hub.drop_all();
  EXPECT_FALSE(asks_for_numbers(2)) << "the same station";
  ecos->set_host("another");
  EXPECT_FALSE(asks_for_numbers(3)) << "still connected";
  station.hub.drop_all();
  EXPECT_TRUE(asks_for_numbers(4));
  ecos->reconnect();
  EXPECT_FALSE(asks_for_numbers(5));
}

TEST_F(ECoSTest, tells_how_its_link_is_at_each_step_of_its_life) {
  station.up = false;
  auto* ecos = layout().get_devices().add(new ECoS(station.socket()));
  const auto decoder = TestDecoder::create(*ecos);
  const auto nobody = "no station answers at “localhost”";
  const auto silent = "has accepted “queryObjects(10,addr)” and does not answer";
  const auto refused = "refused speed 10 of the locomotive with address 3: 25 (no control). It is";
  test::walk(
      clock, *ecos,
      {{"made", [] {}, 0ms, LinkPhase::connecting, 0ms, "", ""},
       {"no station", [] {}, 500ms, LinkPhase::connecting, 500ms, nobody, nobody},
       {"no host", [&] { ecos->set_host(""); }, 10ms, LinkPhase::not_set_up, 10ms,
        "has no address yet", "has no address yet"},
       {"a bad host", [&] { ecos->set_host("[::1"); }, 10ms, LinkPhase::not_set_up, 10ms,
        "is no network address", "“[::1” is no network address"},
       {"the host", [&] { ecos->set_host("localhost"); }, 10ms, LinkPhase::connecting, 10ms, nobody,
        nobody},
       {"a station that refuses",
        [&] { station.up = true, station.hub.faults().fail("get(1,status)", 15, 1); }, 1s,
        LinkPhase::connecting, 1010ms, "cannot be used, it answers 15",
        "cannot be used, it answers 15"},
       {"a station", [] {}, 1100ms, LinkPhase::in_service, 95ms, "", ""},
       {"a command without an answer",
        [&] {
          station.hub.faults().silence("queryObjects", 1);
          decoder->want_speed(10);
        },
        2999ms, LinkPhase::in_service, 3094ms, "", ""},
       {"for three seconds", [] {}, 101ms, LinkPhase::waiting_for_answer, 3100ms, silent, silent},
       {"the answer",
        [&] {
          station.hub.faults().fail("set(1000,speed", 25, 1);
          station.inject("<REPLY queryObjects(10,addr)>\n1000 addr[3]\n<END 0 (OK)>\n");
        },
        1ms, LinkPhase::in_service, 0ms, "", "answers again"},
       {"a refusal", [] {}, 5ms, LinkPhase::lost, 1ms, refused, refused},
       {"back, and the item is kept back", [] {}, 100ms, LinkPhase::in_service, 94ms, "", refused},
       {"the item is taken", [] {}, 2s, LinkPhase::in_service, 2094ms, "", ""},
       {"reconnected by hand", [&] { ecos->reconnect(); }, 0ms, LinkPhase::lost, 0ms,
        "is connected anew", "is connected anew"},
       {"at once", [] {}, 100ms, LinkPhase::in_service, 93ms, "", ""},
       {"gone", [&] { station.kill(); }, 1ms, LinkPhase::lost, 1ms, "ended the connection",
        "ended the connection"},
       {"and away", [] {}, 999ms, LinkPhase::lost, 1s, nobody, nobody},
       {"in service again", [&] { station.up = true; }, 1s, LinkPhase::in_service, 91ms, "", ""},
       {"gone without a word", [&] { station.vanish(); }, 14s, LinkPhase::in_service, 14091ms, "",
        ""},
       {"as the system finds", [] {}, 101ms, LinkPhase::lost, 1ms, "does not answer any more",
        "does not answer any more"},
       {"and stays away", [] {}, 5s, LinkPhase::lost, 5001ms, nobody, nobody}});
}

// --- Its end, and its place in a file ---

TEST_F(ECoSTest, can_be_destroyed_at_any_moment_of_its_life) {
  for (auto moment = 0ms; moment <= 24ms; moment += 1ms) {
    for (const bool lost : {false, true}) {
      SCOPED_TRACE(moment.count());
      auto* ecos = layout().get_devices().add(new ECoS(station.socket()));
      const auto direct = TestDecoder::create(*ecos);
      const auto fanned = TestDecoder::create(layout().get_default_device());
      resend = sigc::connection(Device::signal_in_service().connect([&](Device&) {
        direct->want_speed(1);
        fanned->want_direction(Direction::Reverse);
      }));
      clock.advance(moment);
      if (lost) station.hub.drop_all();
      ecos->destroy();
      EXPECT_TRUE(layout().get_default_device().devices().empty());
      const auto answers = direct->answers.size() + fanned->answers.size();
      clock.advance(2s);
      EXPECT_EQ(answers, direct->answers.size() + fanned->answers.size());
      EXPECT_EQ(0u, station.hub.client_count()) << "the connection goes with it";
      EXPECT_EQ(1u, direct->gobj()->ref_count) << "no fiber is left behind";
    }
  }
}

TEST_F(ECoSTest, can_be_destroyed_by_whoever_hears_a_message) {
  auto* ecos = add_started_ecos();
  int heard = 0;
  ecos->property_track_power().signal_changed().connect([&] {
    ++heard;
    ecos->destroy();
  });
  const std::string event = "<EVENT 1>\n1 status[GO]\n<END 0 (OK)>\n";
  station.inject(event + event);
  clock.advance(1s);
  EXPECT_EQ(1, heard);
}

TEST_F(ECoSTest, begins_nothing_while_its_layout_is_emptied) {
  add_started_ecos();
  layout().destroy();
  const auto before = station.attempts.size();
  clock.advance(5s);
  EXPECT_EQ(before, station.attempts.size());
  EXPECT_EQ(0u, station.hub.client_count());
  Layout::get(new Layout).new_document(false);
}

TEST_F(ECoSTest, requires_all_its_keys_and_writes_them_behind_a_tag_that_ends_the_file) {
  const auto node = YAML::Load("{name: Mine, id: 4, host: \"ecos:99\", use-as-default: false}");
  auto* ecos = layout().get_devices().add(new ECoS(node, station.socket()));
  EXPECT_EQ("Mine", ecos->get_name());
  EXPECT_EQ("ecos:99", ecos->get_host());
  clock.advance(50ms);
  EXPECT_TRUE(ecos->active());
  EXPECT_TRUE(layout().get_default_device().devices().empty());
  for (const auto* key : {"name", "id", "host", "use-as-default"}) {
    auto incomplete = YAML::Clone(node);
    incomplete.remove(key);
    EXPECT_THROW(ECoS(incomplete, station.socket()), YAML::Exception) << key;
  }
  YAML::Emitter out;
  out << YAML::BeginSeq << *ecos;
  EXPECT_FALSE(out.good());
  EXPECT_STREQ("- !", out.c_str());
  EXPECT_EQ("ESU ECoS 1", layout().get_devices().add(new ECoS(station.socket()))->get_name());
}

}  // namespace
}  // namespace zemblar::test
