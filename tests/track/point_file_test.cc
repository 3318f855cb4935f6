// Points, signals and scissor points in a layout file.

#include <gtest/gtest.h>

#include "tests/support/fake_station.h"
#include "tests/support/small_railway.h"
#include "track/point.h"
#include "track/scissor.h"
#include "track/signal.h"

namespace zemblar::test {
namespace {

using Type = PointOutput::Type;

class PointFile : public SmallRailway {
 protected:
  static bool open(const std::string& objects) {
    return Layout::open_bytes("railway.zblt", "%YAML 1.2\ntitle: Railway\nobjects:\n" + objects);
  }
  template <typename T = PointBase>
  static T& first() {
    return dynamic_cast<T&>(*layout().get_points().child_at(0));
  }
  /// Saved, opened and saved again, the bytes are the same; an empty text when they are not.
  static std::string comes_back() {
    const auto text = layout().serialize();
    const bool opened = Layout::open_bytes("railway.zblt", text);
    EXPECT_TRUE(opened) << get_status() << text;
    return opened && layout().serialize() == text ? text : "";
  }
};

TEST_F(PointFile, comes_back_with_outputs_states_and_joins_byte_for_byte) {
  auto* point = layout().get_points().add(new Point);
  const auto zones = row({"A", "B"});
  for (auto* one : zones) one->get_input()->destroy();
  zones[0]->right.connect(&point->common);
  const auto third = "a: \"third\" # " + std::string(1200, 'x');
  point->add_state().set_name(third);
  for (auto* state : point->states()) {
    auto* link = point->get_link("state:" + state->get_name().raw());
    link->connect(&layout().get_blocks().add(new Zone)->left);
  }
  for (const auto type : {Type::Extended, Type::Function, Type::Servo}) {
    auto& output = point->add_output();
    output.set_type(type);
    if (type == Type::Function) output.set_address(Address(100, true));
    point->states()[2]->set_setting(
        output, {.servo = 0.1f, .extended = 63, .function = true, .enabled = false});
  }
  point->states()[2]->activate();
  layout().get_points().add(new Scissor);
  auto* signal = layout().get_points().add(new Signal);
  dynamic_cast<SignalState*>(signal->states()[1])->set_image("signals/go: 1.svg");

  const auto text = comes_back();
  for (const auto* part : {
           "- !point\n    name: Point 1\n    id: 0\n    outputs:\n      - type: Basic\n"
           "        device: ~\n        address: 1\n        output: 1\n      - type: Extended\n"
           "        device: ~\n        address: 1\n      - type: Function\n        device: ~\n"
           "        address: !long 100\n        function: 1\n      - type: Servo\n"
           "        device: ~\n    states:\n",
           "          - enabled: true\n            basic: Left\n          - enabled: false\n"
           "            extended: 63\n          - enabled: false\n            function: true\n"
           "          - enabled: false\n            servo: 0.1\n    input: ~\n    links:\n"
           "      common: [",
           "\n      state:Straight: [",
           "        image: ~\n",
           "        image: \"signals/go: 1.svg\"\n",
           "    state-map:\n      tl-tr: ",
       }) {
    EXPECT_NE(text.find(part), std::string::npos) << part << "\nin\n" << text;
  }
  const auto& read = first<Point>();
  EXPECT_EQ(read.get_state(), read.states()[0]);
  EXPECT_NE(read.state_link(read.states()[2])->get_partner(), nullptr);
  EXPECT_EQ(read.states()[2]->get_name(), third);
}

TEST_F(PointFile, brings_devices_and_detectors_without_sending_anything) {
  const auto load = [](const YAML::Node& node) -> Object* {
    struct Station : FakeStation {
      explicit Station(const YAML::Node& node) : Glib::ObjectBase("FakeStation") {
        load_identity(node);
      }
    };
    return new Station(node);
  };
  static const DocumentClass::Registration registration(
      {"!test-station", Section::devices, load, nullptr});
  ASSERT_TRUE(
      open("- !point {outputs: [{type: FUNCTION, device: 7, address: 40, function: 2}], "
           "states: [{name: on, outputs: [{function: true}]}, "
           "{name: off, outputs: [{}], surplus: 1}], input: 7}\n"
           "- !test-station {id: 7}\n"))
      << get_status();
  auto& station = dynamic_cast<FakeStation&>(*layout().get_devices().child_at(0));
  station.set_active(true);
  auto& point = first();
  EXPECT_EQ(point.get_input(), &station);
  EXPECT_EQ(point.get_output(1).get_device(), &station);
  EXPECT_EQ(point.get_state()->get_name(), "on");
  EXPECT_EQ(station.sent(), Log());
  point.states()[1]->activate();
  EXPECT_EQ(station.sent(), Log{"40 f2 off"});
  station.destroy();
  EXPECT_EQ(point.get_output(1).get_device(), nullptr);
}

TEST_F(PointFile, reads_what_is_incomplete_as_far_as_it_goes) {
  struct {
    const char* object;
    unsigned outputs;
    unsigned states;
  } const cases[] = {
      {"!point {}", 1, 0},
      {"!signal {}", 1, 0},
      {"!scissor {states: []}", 1, 0},
      {"!point {outputs: [], states: [{outputs: []}, {outputs: []}]}", 0, 2},
      {"!point {outputs: [], states: [{name: a, outputs: [{basic: Right}]}], links: ~}", 0, 1},
      {"!point {states: [{outputs: [{}, {basic: 7}, 8]}], links: {common: ~, state:x: 3}}", 1, 1},
      {"!scissor {outputs: [{type: SERVO, address: 0}], state-map: {tl-tr: 4}}", 1, 0},
  };
  for (const auto& one : cases) {
    ASSERT_TRUE(open("- " + std::string(one.object) + "\n")) << one.object << get_status();
    auto& point = first();
    EXPECT_EQ(point.get_outputs().size(), one.outputs) << one.object;
    EXPECT_EQ(point.states().size(), one.states) << one.object;
    EXPECT_EQ(point.get_state(), one.states ? point.states()[0] : nullptr) << one.object;
    for (const auto* name : {"common", "top-left"}) {
      if (auto* link = point.get_link(name)) (void)point.next_link(link);
    }
    EXPECT_NE(comes_back(), "") << one.object;
  }
}

TEST_F(PointFile, takes_the_roles_of_a_scissor_point_from_the_map_alone) {
  const std::string object =
      "- !scissor {id: 0, outputs: [], states: [{id: 1, name: a, outputs: []}, "
      "{id: 2, name: b, outputs: []}, {id: 3, name: c, outputs: []}], "
      "state-map: {bl-br: 1, tl-tr: 2, tl-br: 9, bl-tr: 5}}\n"
      "- !scissor {states: [{id: 5, outputs: [{}]}]}\n";
  ASSERT_TRUE(open(object)) << get_status();
  auto& scissor = first<Scissor>();
  const auto way = [&](const char* from) {
    return scissor.get_link_name(scissor.next_link(scissor.get_link(from)));
  };
  EXPECT_EQ(way("bottom-left"), "bottom-right");
  scissor.states()[1]->activate();
  EXPECT_EQ(way("top-right"), "top-left");
  scissor.states()[2]->activate();  // has no role
  for (const auto* name : Corners::names) EXPECT_EQ(way(name), "");
  scissor.states()[1]->destroy();
  const auto text = comes_back();
  for (const auto* role : {"tl-tr: ~", "tl-br: ~", "bl-tr: ~"}) {
    EXPECT_LT(text.find(role), text.rfind("- !scissor")) << role << " in\n" << text;
  }
}

TEST_F(PointFile, refuses_what_no_point_can_have) {
  layout().get_points().add(new Point)->set_name("kept");
  for (const auto* keys : {
           "outputs: 3",
           "outputs: [{type: basic}]",
           "outputs: [{type: [Basic]}]",
           "outputs: [{address: 0}]",
           "outputs: [{address: 513}]",
           "outputs: [{address: !long 3}]",
           "outputs: [{output: 0}]",
           "outputs: [{output: 5}]",
           "outputs: [{type: Extended, address: 2049}]",
           "outputs: [{type: Function, address: 10240}]",
           "outputs: [{type: Function, function: 29}]",
           "outputs: [{device: x}]",
           "states: 3",
           "states: [~]",
           "states: [{name: a}]",
           "states: [{outputs: []}]",
           "states: [{outputs: {a: b}}]",
           "states: [{outputs: [{basic: left}]}]",
           "states: [{outputs: [{enabled: perhaps}]}]",
           "outputs: [{type: Extended}], states: [{outputs: [{extended: 64}]}]",
           "outputs: [{type: Function}], states: [{outputs: [{function: 1}]}]",
           "outputs: [{type: Servo}], states: [{outputs: [{servo: .inf}]}]",
           "outputs: [{type: Servo}], states: [{outputs: [{servo: 1e39}]}]",
           "states: [{id: 0, outputs: [{}]}], id: 0",
           "links: 3",
           "links: {common: 3}",
       }) {
    EXPECT_FALSE(open("- !point {" + std::string(keys) + "}\n")) << keys;
    EXPECT_NE(layout().get_points().find_child("kept"), nullptr) << keys;
  }
  EXPECT_FALSE(open("- !signal {states: [{outputs: [{}], image: [a]}]}\n"));
  EXPECT_FALSE(open("- !scissor {state-map: {tl-tr: x}}\n"));
  EXPECT_FALSE(open("- !scissor {state-map: 3}\n"));
}

}  // namespace
}  // namespace zemblar::test
