#include "locomotives/decoder.h"

#include <yaml-cpp/yaml.h>

#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "tests/support/fake_station.h"

namespace zemblar::test {
namespace {

class DecoderTest : public LayoutTest {
 protected:
  FakeStation* station = FakeStation::in_service();
  Glib::RefPtr<Decoder> decoder = Decoder::create();
};

TEST_F(DecoderTest, scales_truncates_and_limits_each_speed_but_an_emergency_stop) {
  const struct {
    unsigned speed;
    double ratio;
    unsigned step;
  } cases[] = {{126, 0.5, 63}, {100, 0.29, 28}, {3, 0.3, 0},    {126, 1, 126},
               {1, 0, 0},      {126, 10, 126},  {13, 9.7, 126}, {12, 9.7, 116}};
  for (const auto& one : cases) {
    decoder->set_speed_ratio(one.ratio);
    decoder->set_speed(one.speed);
    EXPECT_EQ(decoder->get_speed(), one.step) << one.speed << " at " << one.ratio;
    decoder->set_speed(DecoderUpdate::emergency_stop);
    EXPECT_EQ(decoder->get_speed(), DecoderUpdate::emergency_stop);
  }
  for (const double bad : {-0.1, HUGE_VAL, std::nan("")}) decoder->set_speed_ratio(bad);
  EXPECT_EQ(decoder->get_speed_ratio(), 9.7);
}

TEST_F(DecoderTest, sends_unchanged_values_again_and_inverts_only_when_reversed) {
  decoder->set_speed(5);
  decoder->set_speed(5);
  decoder->set_direction(Direction::Forwards);
  decoder->set_reverse(true);
  decoder->set_direction(Direction::Forwards);
  decoder->set_function(28, true);
  decoder->set_function(28, true);
  EXPECT_EQ(station->sent(),
            (Log{"3 speed 5", "3 speed 5", "3 forwards", "3 reverse", "3 f28 on", "3 f28 on"}));
  EXPECT_EQ(decoder->get_direction(), Direction::Reverse);
  EXPECT_EQ(decoder->state().mask, 0u);
}

TEST_F(DecoderTest, records_but_does_not_send_movement_while_commands_are_disabled) {
  decoder->set_commands_enabled(false);
  decoder->set_speed(9);
  decoder->set_direction(Direction::Reverse);
  decoder->set_function(0, true);
  EXPECT_EQ(station->sent(), Log{"3 f0 on"});
  EXPECT_EQ(decoder->get_speed(), 9u);
  EXPECT_EQ(decoder->get_direction(), Direction::Reverse);
  decoder->mark_out_of_date(DecoderUpdate::speed_bit | DecoderUpdate::function_bit(0));
  EXPECT_EQ(decoder->state().mask, DecoderUpdate::function_bit(0));
  decoder->complete({});
  EXPECT_EQ(station->sent(), Log{"3 f0 on"}) << "what the station has lost";
  decoder->set_commands_enabled(true);
  EXPECT_EQ(station->sent(), Log{});
}

TEST_F(DecoderTest, catches_up_with_the_latest_wish_in_order_of_importance) {
  station->hold_answers = true;
  decoder->set_speed(10);
  decoder->set_function(3, true);
  decoder->set_direction(Direction::Reverse);
  for (unsigned speed = 11; speed <= 20; ++speed) decoder->set_speed(speed);
  station->hold_answers = false;
  station->answer();
  const auto sent = station->sent();
  ASSERT_GE(sent.size(), 4u);
  EXPECT_EQ(sent.front(), "3 speed 10");
  EXPECT_EQ(Log(sent.end() - 3, sent.end()), (Log{"3 speed 20", "3 reverse", "3 f3 on"}));
  EXPECT_LE(sent.size(), 5u) << "what was overtaken is skipped";
  EXPECT_EQ(decoder->state().mask, 0u);
}

TEST_F(DecoderTest, starts_each_function_once_in_a_round_however_soon_it_is_answered) {
  for (const bool held : {false, true}) {
    station->set_active(false);
    Log expected;
    for (unsigned fn = 0; fn <= 28; ++fn) {
      decoder->set_function(fn, !held);
      expected.push_back("3 f" + std::to_string(fn) + (held ? " off" : " on"));
    }
    decoder->set_direction(Direction::Forwards);
    EXPECT_EQ(station->sent(), Log{});
    station->hold_answers = held;
    station->set_active(true);
    decoder->resend();
    for (int i = 0; i < 40; ++i) station->answer();
    auto sent = station->sent();
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent.front(), "3 forwards");
    sent.erase(sent.begin());
    EXPECT_EQ(sent, expected) << (held ? "held" : "at once");
    EXPECT_EQ(decoder->state().mask, 0u);
  }
}

TEST_F(DecoderTest, falls_back_on_the_default_device_when_its_own_ends) {
  auto* own = FakeStation::in_service(false);
  int changes = 0;
  decoder->signal_changed().connect([&] { ++changes; });
  decoder->set_device(own);
  decoder->set_device(own);
  EXPECT_EQ(changes, 1);
  decoder->set_speed(1);
  EXPECT_EQ(own->sent(), Log{"3 speed 1"});
  own->destroy();
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(decoder->get_device(), nullptr);
  decoder->set_speed(2);
  EXPECT_EQ(station->sent(), Log{"3 speed 2"});
  decoder->set_device(station);
  decoder->set_device(static_cast<zemblar::Object*>(&layout()));
  EXPECT_EQ(decoder->get_device(), nullptr) << "what is no device stands for the default one";
}

TEST_F(DecoderTest, tells_of_settings_and_never_of_what_is_sent) {
  int changes = 0;
  decoder->signal_changed().connect([&] { ++changes; });
  for (int i = 0; i < 2; ++i) {
    decoder->set_type(DecoderType::dcc28);
    decoder->set_address(Address(3, true));
    decoder->set_speed_ratio(0.5);
    decoder->set_commands_enabled(false);
    decoder->set_reverse(true);
  }
  EXPECT_EQ(changes, 5);
  decoder->set_speed(1);
  decoder->set_direction(Direction::Reverse);
  decoder->set_function(1, true);
  EXPECT_EQ(changes, 5);
}

TEST_F(DecoderTest, may_end_while_every_station_still_owes_an_answer) {
  auto* second = FakeStation::in_service();
  station->hold_answers = second->hold_answers = true;
  auto* lok = layout().get_loks().add(new Lok);
  lok->set_speed(7);
  lok->destroy();
  decoder->set_speed(8);
  decoder.reset();
  station->answer();
  second->answer();
  EXPECT_EQ(second->sent().front(), "3 speed 7");
}

TEST_F(DecoderTest, sends_what_it_has_missed_when_its_station_comes_into_service) {
  auto* own = FakeStation::in_service(false);
  own->set_active(false);
  station->set_active(false);
  auto* group = layout().get_loks().add(new LokGroup)->add(new LokGroup);
  auto* deep = group->add(new Lok);
  auto* direct = layout().get_loks().add(new Lok);
  direct->get_decoders().front()->set_address(Address(4));
  direct->get_decoders().front()->set_device(own);
  deep->set_speed(30);
  direct->set_speed(40);
  direct->set_speed(0);
  direct->set_direction(Direction::Reverse);
  EXPECT_EQ(station->sent(), Log{});
  station->set_active(true);
  EXPECT_EQ(station->sent(), Log{"3 speed 30"});
  EXPECT_EQ(own->sent(), Log{});
  own->set_active(true);
  EXPECT_EQ(own->sent(), (Log{"4 speed 0", "4 reverse"}));
  own->set_active(false);
  own->set_active(true);
  EXPECT_EQ(own->sent(), Log{}) << "nothing is out of date";
}

std::string saved(const Decoder& decoder) {
  YAML::Emitter out;
  decoder.save(out);
  return out.c_str();
}

TEST_F(DecoderTest, reads_back_what_it_writes_but_for_disabled_commands) {
  for (const auto* text : {
           "type: DCC 14\ndevice: ~\naddress: 3\nspeed: 1",
           "type: DCC 27\ndevice: ~\naddress: !long 3\nspeed: 0.1",
           "type: DCC 28\ndevice: ~\naddress: 10239\nspeed: !reverse 0.75",
           "type: DCC 128\ndevice: ~\naddress: 127\nspeed: !reverse 1",
           "type: DCC 128\ndevice: ~\naddress: 3\nspeed: !reverse 25.5",
       }) {
    EXPECT_EQ(saved(*Decoder::create(YAML::Load(text)).operator->()), text);
  }
  const auto disabled = Decoder::create(YAML::Load("{type: DCC 28, speed: !reverse 0.5}"));
  disabled->set_commands_enabled(false);
  const auto text = saved(*disabled.operator->());
  EXPECT_EQ(text, "type: DCC 28\ndevice: ~\naddress: 3\nspeed: ~");
  const auto back = Decoder::create(YAML::Load(text));
  EXPECT_TRUE(back->get_commands_enabled());
  EXPECT_FALSE(back->get_reverse());
  EXPECT_EQ(back->get_speed_ratio(), 1);
}

TEST_F(DecoderTest, refuses_settings_that_cannot_be) {
  for (const auto* text : {"speed: fast", "speed: -1", "speed: .nan", "speed: '1'", "speed: [1]",
                           "speed: !backwards 1", "address: 0", "address: !long x", "device: x"}) {
    EXPECT_THROW(Decoder::create(YAML::Load(text)), YAML::InvalidScalar) << text;
  }
  for (const auto* text : {"type: dcc 14", "type: ~", "type: [DCC 14]"}) {
    try {
      Decoder::create(YAML::Load(text));
      ADD_FAILURE() << text;
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "Invalid Decoder Type");
    }
  }
}

TEST(DecoderDeathTest, insists_on_speeds_and_functions_that_exist) {
  const auto decoder = Decoder::create();
  EXPECT_DEATH(decoder->set_speed(127), "\\(speed <= 126\\) \\|\\| \\(speed == -1U\\)");
  EXPECT_DEATH(decoder->set_function(29, true), "fn <= 28");
  EXPECT_DEATH(static_cast<void>(decoder->get_function(29)), "fn <= 28");
}

}  // namespace
}  // namespace zemblar::test
