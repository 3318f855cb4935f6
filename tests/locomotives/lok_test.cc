#include "locomotives/lok.h"

#include <yaml-cpp/yaml.h>

#include <functional>

#include "core/string_pool.h"
#include "locomotives/function.h"
#include "locomotives/script_overlay.h"
#include "tests/support/fake_station.h"
#include "track/zone.h"

namespace zemblar::test {
namespace {

const std::vector<const char*> properties = {
    "top-speed", "speed",        "emergency-stop", "direction",
    "brake",     "actual-speed", "speed-overlay",  "direction-overlay"};

class LokTest : public LayoutTest {
 protected:
  LokTest() : lok(layout().get_loks().add(new Lok)) {
    for (const auto* name : properties) {
      const auto detailed = std::string("notify::") + name;
      g_signal_connect(lok->gobj(), detailed.c_str(), G_CALLBACK(&LokTest::note), &told);
    }
  }
  static void note(GObject*, GParamSpec* property, gpointer log) {
    static_cast<Log*>(log)->push_back(property->name);
  }

  FakeStation* station = FakeStation::in_service();
  Log told;
  Lok* lok;
};

TEST_F(LokTest, gives_its_decoders_the_speed_that_its_state_asks_for) {
  ScriptOverlay level;
  const auto script = [&](unsigned speed) {
    level.speeds[lok] = speed;
    lok->apply_speed_overlay();
  };
  const auto no_script = [&] {
    level.speeds.clear();
    lok->apply_speed_overlay();
  };
  const auto apply = [&] { lok->apply_speed_overlay(); };
  const auto speed = [&](unsigned step) { return [=, this] { lok->set_speed(step); }; };
  const auto brake = [&](bool on) { return [=, this] { lok->set_brake(on); }; };
  const auto emergency = [&](bool on) { return [=, this] { lok->set_emergency_stop(on); }; };
  const auto both = [](const auto& first, const auto& second) {
    return [=] { first(), second(); };
  };
  const std::string all = "speed speed-overlay emergency-stop ";
  const struct {
    const char* what;
    std::function<void()> act;
    const char* sent;
    std::string told;
    const char* state;  // speed, speed in force, "e" in an emergency
  } steps[] = {
      {"a speed", speed(50), "3 speed 50;", all, "50 50"},
      {"the same speed", speed(50), "", "", "50 50"},
      {"brake", brake(true), "3 speed 0;", "brake ", "50 50"},
      {"the brake again", brake(true), "", "", "50 50"},
      {"a speed under the brake", speed(80), "", all, "80 50"},
      {"an overlay under the brake", apply, "", "", "80 50"},
      {"release: the speed of before", brake(false), "3 speed 50;", "brake ", "80 50"},
      {"catching up", apply, "3 speed 80;", "speed-overlay ", "80 80"},
      {"a script", [&] { script(20); }, "3 speed 20;", "speed-overlay ", "80 20"},
      {"a speed under a script", speed(90), "3 speed 20;", all, "90 20"},
      {"emergency", emergency(true), "3 stop;", all, "0 0e"},
      {"emergency again", emergency(true), "", "", "0 0e"},
      {"a script in emergency", apply, "3 stop;", "speed-overlay ", "0 0e"},
      {"brake in emergency", brake(true), "3 speed 0;", "brake ", "0 0e"},
      {"release in emergency", brake(false), "3 stop;", "brake ", "0 0e"},
      {"end of emergency: the script's speed", emergency(false), "3 speed 20;",
       "speed-overlay emergency-stop ", "0 20"},
      {"end of the script", no_script, "3 speed 0;", "speed-overlay ", "0 0"},
      {"emergency under the brake", both(brake(true), emergency(true)), "3 speed 0;3 stop;",
       "brake " + all, "0 0e"},
      {"its end under the brake", emergency(false), "", "emergency-stop ", "0 0"},
      {"a speed out of emergency under the brake", both(emergency(true), speed(30)), "3 stop;",
       all + all, "30 0"},
      {"release: the stop of before", brake(false), "3 stop;", "brake ", "30 0"},
      {"zero lifts an emergency as well", both(emergency(true), speed(0)), "3 stop;3 speed 0;",
       all + all, "0 0"},
  };
  const auto joined = [](const Log& lines, char end) {
    std::string text;
    for (const auto& line : lines) text += line + end;
    return text;
  };
  for (const auto& step : steps) {
    step.act();
    EXPECT_EQ(joined(station->sent(), ';'), step.sent) << step.what;
    EXPECT_EQ(joined(std::exchange(told, {}), ' '), step.told) << step.what;
    EXPECT_EQ(std::to_string(lok->get_speed()) + " " + std::to_string(lok->get_speed_overlay()) +
                  (lok->get_emergency_stop() ? "e" : ""),
              step.state)
        << step.what;
  }
}

TEST_F(LokTest, turns_round_with_the_direction_in_force) {
  Zone zone;
  auto& leading = zone.right;
  auto& trailing = zone.left;
  lok->front = &leading;
  lok->back = &trailing;
  lok->set_direction(Direction::Forwards);
  EXPECT_EQ(station->sent(), Log{});
  lok->set_direction(Direction::Reverse);
  EXPECT_EQ(station->sent(), Log{"3 reverse"});
  EXPECT_EQ(std::exchange(told, {}), (Log{"direction", "direction-overlay"}));
  EXPECT_EQ(lok->front, &trailing);
  EXPECT_EQ(lok->back, &leading);

  ScriptOverlay first;
  ScriptOverlay last;
  first.directions[lok] = Direction::Forwards;
  last.directions[lok] = Direction::Reverse;
  lok->apply_direction_overlay();
  lok->set_direction(Direction::Forwards);  // overruled: nothing moves, and nothing is told
  EXPECT_EQ(station->sent(), Log{});
  EXPECT_EQ(told, Log{});
  EXPECT_EQ(lok->get_direction(), Direction::Forwards);

  last.directions.clear();
  for (int i = 0; i < 2; ++i) {  // the recorded direction stays, so each call turns it again
    lok->apply_direction_overlay();
    EXPECT_EQ(station->sent(), Log{"3 forwards"});
    EXPECT_EQ(std::exchange(told, {}), Log{"direction-overlay"});
    EXPECT_EQ(lok->get_direction_overlay(), Direction::Reverse);
    EXPECT_EQ(lok->front, i == 0 ? &leading : &trailing);
  }

  first.remove();
  EXPECT_EQ(station->sent(), Log{"3 forwards"}) << "as it was told meanwhile";
}

TEST_F(LokTest, commands_each_decoder_by_its_own_rules) {
  auto& second = lok->add_decoder();
  second.set_address(Address(300));
  second.set_speed_ratio(0.5);
  second.set_reverse(true);
  lok->set_speed(100);
  lok->set_direction(Direction::Reverse);
  EXPECT_EQ(station->sent(), (Log{"3 speed 100", "300 speed 50", "3 reverse", "300 forwards"}));
  EXPECT_TRUE(lok->has_address(Address(300)));
  EXPECT_FALSE(lok->has_address(Address(3, true)));
}

TEST_F(LokTest, survives_handlers_that_take_a_decoder_or_destroy_it) {
  lok->add_decoder();
  lok->signal_brake_changed().connect([&] { lok->remove_decoder(1); });
  lok->set_brake(true);
  EXPECT_EQ(lok->get_decoders().size(), 1u);
  for (const auto* property : {"speed", "speed-overlay", "emergency-stop", "brake", "direction"}) {
    auto* doomed = layout().get_loks().add(new Lok);
    doomed->connect_property_changed(property, [doomed] { doomed->destroy(); });
    if (property == std::string("brake")) {
      doomed->set_brake(true);
    } else if (property == std::string("direction")) {
      doomed->set_direction(Direction::Reverse);
    } else {
      doomed->set_speed(1);
    }
    EXPECT_EQ(layout().get_loks().child_count(), 1u) << property;
  }
}

TEST_F(LokTest, converts_speeds_that_the_track_reports) {
  EXPECT_EQ(lok->get_actual_speed(), -1);
  const struct {
    unsigned char raw;
    int speed;
  } cases[] = {{0, 0}, {1, 0}, {2, 0}, {3, 1}, {64, 62}, {127, 125}, {129, 126}, {255, 126}};
  for (const auto& one : cases) {
    lok->set_actual_speed(one.raw);
    EXPECT_EQ(lok->get_actual_speed(), one.speed) << int{one.raw};
  }
  EXPECT_EQ(told, Log(5, "actual-speed")) << "once for each of 0, 1, 62, 125 and 126";
}

TEST_F(LokTest, is_found_by_the_addresses_of_its_decoders_the_first_one_before_others) {
  auto& by_default = layout().get_default_device();
  auto* second = layout().get_loks().add(new Lok);
  auto* third = layout().get_loks().add(new Lok);
  EXPECT_EQ(by_default.find_lok(Address(3)), lok);
  lok->get_decoders().front()->set_address(Address(5));
  EXPECT_EQ(by_default.find_lok(Address(5)), lok);
  EXPECT_EQ(by_default.find_lok(Address(3)), second) << "given up by the first";
  second->get_decoders().front()->set_device(station);
  EXPECT_EQ(station->find_lok(Address(3)), second);
  EXPECT_EQ(by_default.find_lok(Address(3)), third);
  station->destroy();
  EXPECT_EQ(by_default.find_lok(Address(3)), third);
  third->signal_deleted().connect(
      [&] { EXPECT_EQ(by_default.find_lok(Address(3)), second) << "not one that ends"; });
  third->destroy();
  second->add_decoder().set_address(Address(9));
  EXPECT_EQ(by_default.find_lok(Address(9)), second);
  second->remove_decoder(1);
  EXPECT_EQ(by_default.find_lok(Address(9)), nullptr);
  second->remove_decoder(0);
  EXPECT_EQ(second->get_decoders().size(), 1u) << "the last one stays";
}

TEST_F(LokTest, leaves_no_entry_in_overlays_and_no_string_in_the_pool) {
  ScriptOverlay level;
  level.speeds[lok] = 5;
  level.directions[lok] = Direction::Reverse;
  auto* horn = lok->add(new Function(lok));
  level.states[horn] = true;
  lok->set_attribute("Epoch", "III");
  lok->set_attribute("Epoch", "IV");
  lok->set_attribute("Epoch", "IV");
  lok->set_attribute("Colour", "green");
  EXPECT_EQ(attribute_strings().get_all("Epoch"), (std::vector<Glib::ustring>{"IV"}));
  lok->remove_attribute("Colour");
  lok->remove_attribute("Colour");
  EXPECT_EQ(attribute_strings().get_all(), (std::vector<Glib::ustring>{"Epoch"}));

  // The overlay stands in a layout that is no longer current, as while another one is opened.
  auto* const former = &layout();
  Layout::get(new Layout).new_document(false);
  lok->destroy();
  EXPECT_TRUE(level.speeds.empty() && level.directions.empty() && level.states.empty());
  EXPECT_TRUE(attribute_strings().get_all().empty());
  EXPECT_TRUE(function_names().get_all().empty());
  layout().destroy();
  Layout::get(former);
}

constexpr auto two_loks = R"(%YAML 1.2
title: Small
objects:
  - !lok
    name: Crocodile
    id: 0
    top-speed: 65
    decoders:
      - type: DCC 128
        device: ~
        address: 3
        speed: 1
      - type: DCC 28
        device: ~
        address: 1234
        speed: !reverse 0.8
    functions:
      - name: Light
        id: 1
        type: Toggle
        decoder: 0
        function: 0
        on_image: ~
        off_image: ~
      - name: Horn
        id: 2
        type: Script
        decoder: 1
        function: 28
        on_image: images/horn on.svg
        off_image: "~"
  - !lok
    name: Locomotive 1
    id: 3
    top-speed: 100
    decoders:
      - type: DCC 14
        device: ~
        address: !long 3
        speed: 0.1
    functions:
      []
)";

TEST_F(LokTest, comes_back_from_a_file_byte_for_byte_and_found_by_address) {
  const auto path = folder.write("small.zblt", two_loks);
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(Layout::open(path)) << get_status();
    layout().save();
    EXPECT_EQ(bytes_of(path), two_loks);
  }
  auto* crocodile = dynamic_cast<Lok*>(layout().get_loks().child_at(0));
  EXPECT_EQ(crocodile->get_decoders().size(), 2u) << "those of the file in place of the default";
  EXPECT_EQ(layout().get_default_device().find_lok(Address(1234)), crocodile);
  EXPECT_EQ(layout().get_default_device().find_lok(Address(3, true)),
            layout().get_loks().child_at(1));
  EXPECT_EQ(dynamic_cast<Function*>(crocodile->child_at(1))->get_type(), Function::Type::Script);
  EXPECT_TRUE(crocodile->can_contain(crocodile->child_at(0)));
  EXPECT_FALSE(
      dynamic_cast<Lok*>(layout().get_loks().child_at(1))->can_contain(crocodile->child_at(0)));
  EXPECT_EQ(function_names().get_all(), (std::vector<Glib::ustring>{"Horn", "Light"}));
}

TEST_F(LokTest, that_cannot_be_read_leaves_nothing_behind) {
  const auto names = function_names().get_all();
  for (const auto* entry : {
           "functions: [{name: A}, {function: 29}]",
           "functions: [{name: A}, {decoder: 1}]",
           "functions: [{name: A}, {type: toggle}]",
           "functions: [{name: A}, {type: [Pulse]}]",
           "functions: [{name: A}, {name: [B]}]",
           "functions: {name: A}",
           "decoders: 5",
           "decoders: [{}, {type: DCC 29}]",
           "top-speed: fast",
       }) {
    const auto path = folder.write("bad.zblt", std::string("objects:\n  - !lok {") + entry + "}\n");
    EXPECT_FALSE(Layout::open(path)) << entry;
    EXPECT_EQ(function_names().get_all(), names) << entry;
  }
  const auto path = folder.write(
      "ok.zblt", "objects:\n  - !lok {decoders: ~, functions: ~}\n  - !lok {decoders: []}\n");
  ASSERT_TRUE(Layout::open(path)) << get_status();
  EXPECT_EQ(dynamic_cast<Lok*>(layout().get_loks().child_at(0))->get_decoders().size(), 1u);
  EXPECT_EQ(dynamic_cast<Lok*>(layout().get_loks().child_at(1))->get_decoders().size(), 1u);
}

}  // namespace
}  // namespace zemblar::test
