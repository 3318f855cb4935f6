#include "track/point.h"

#include <gtest/gtest.h>

#include "core/collections.h"
#include "tests/support/fake_station.h"
#include "tests/support/small_railway.h"
#include "track/scissor.h"
#include "track/signal.h"

namespace zemblar::test {
namespace {

using Type = PointOutput::Type;

class PointTest : public SmallRailway {
 protected:
  template <typename T>
  static T* add() {
    return layout().get_points().add(new T);
  }
  FakeStation* station = FakeStation::in_service();
  Point* point = add<Point>();
  PointState* straight = point->states()[0];
  PointState* curved = point->states()[1];
};

TEST_F(PointTest, sends_what_the_type_of_an_output_asks_for) {
  const std::tuple<Type, Log, Log> cases[] = {
      {Type::Basic, {"100/1 right"}, {"100/1 left"}},
      {Type::Extended, {"100 aspect 1"}, {"100 aspect 0"}},
      {Type::Function, {"100 f1 on"}, {"100 f1 off"}},
      {Type::Servo, {}, {}},
  };
  auto& output = point->get_output(1);
  output.set_address(Address(Address::Kind::accessory, 100));
  auto* own = FakeStation::in_service(false);
  for (const auto& [type, on_curved, on_straight] : cases) {
    output.set_type(type);
    for (auto* device : {static_cast<Device*>(nullptr), static_cast<Device*>(own)}) {
      output.set_device(device);
      curved->activate();
      EXPECT_EQ((device ? own : station)->sent(), on_curved);
      curved->activate();
      point->set_state(nullptr);
      point->set_state(add<Point>()->states()[0]);
      EXPECT_EQ((device ? own : station)->sent(), Log());
      straight->activate();
      EXPECT_EQ((device ? own : station)->sent(), on_straight);
      EXPECT_EQ((device ? station : own)->sent(), Log());
    }
  }
}

TEST_F(PointTest, commands_every_output_in_its_order_though_one_is_not_enabled) {
  auto& second = point->add_output();
  second.set_output(4);
  auto setting = PointStateOutput::on();
  setting.enabled = false;
  curved->set_setting(second, setting);
  curved->activate();
  EXPECT_EQ(station->sent(), (Log{"1/1 right", "1/4 right"}));
  straight->activate();
  EXPECT_EQ(station->sent(), (Log{"1/1 left", "1/4 left"}));
  point->remove_output(1);
  curved->activate();
  EXPECT_EQ(station->sent(), Log{"1/4 right"});
  auto& another = point->add_output();  // most likely in the memory of the first
  EXPECT_EQ(curved->get_setting(another), PointStateOutput());
  point->remove_output(2);
  EXPECT_DEATH((void)point->get_output(2), "\\(index > 0\\) && \\(index <= point.outputs.size");
}

TEST_F(PointTest, tells_of_a_new_state_when_it_has_been_sent) {
  Log told;
  const ScopedConnection all_points(
      layout().get_all_points().signal_changed().connect([&] { told.push_back("all points"); }));
  point->signal_route().connect([&] {
    EXPECT_EQ(point->get_state(), curved);
    EXPECT_EQ(station->sent(), Log{"1/1 right"});
    told.push_back("route");
  });
  point->property_state().signal_changed().connect([&] { told.push_back("state"); });
  curved->activate();
  curved->activate();
  EXPECT_EQ(told, (Log{"route", "state", "all points"}));
}

TEST_F(PointTest, survives_handlers_that_end_it) {
  const auto dies = [&](auto connect) {
    auto* doomed = add<Point>();
    auto* state = doomed->states()[1];
    connect(*doomed);
    state->activate();
  };
  dies([](Point& doomed) { doomed.signal_route().connect([&] { doomed.destroy(); }); });
  dies([](Point& doomed) {
    doomed.property_state().signal_changed().connect([&] { doomed.destroy(); });
  });
  auto* doomed = add<Point>();
  doomed->states()[0]->signal_deleted().connect([&] { doomed->destroy(); });
  doomed->states()[0]->destroy();
  EXPECT_EQ(layout().get_points().child_count(), 1u);
}

TEST_F(PointTest, opens_the_way_of_its_state_alone) {
  auto* straight_link = point->get_link("state:Straight");
  auto* curved_link = point->get_link("state:Curved");
  ASSERT_TRUE(straight_link && curved_link);
  EXPECT_EQ(point->next_link(&point->common), straight_link);
  EXPECT_EQ(point->next_link(straight_link), &point->common);
  EXPECT_EQ(point->next_link(curved_link), nullptr);
  curved->activate();
  EXPECT_EQ(point->next_link(&point->common), curved_link);
  EXPECT_EQ(point->next_link(straight_link), nullptr);

  curved->set_name("Branch");
  EXPECT_EQ(point->get_link_name(curved_link), "state:Branch");
  EXPECT_EQ(point->get_link("state:Branch"), curved_link);
  for (const auto* name : {"state:Curved", "Branch", "state:", "", "left"}) {
    EXPECT_EQ(point->get_link(name), nullptr) << name;
  }
  EXPECT_EQ(point->get_link("common"), &point->common);
  EXPECT_EQ(point->next_link(nullptr), nullptr);
  EXPECT_EQ(point->get_link_name(&add<Point>()->common), "");
}

TEST_F(PointTest, goes_to_the_first_state_that_is_left_when_the_current_one_ends) {
  auto* a = zone("a");
  auto* third = &point->add_state();
  third->activate();
  point->get_link("state:State 1")->connect(&a->left);
  station->sent();
  Log told;
  third->signal_deleted().connect([&] {
    EXPECT_EQ(a->left.get_partner(), nullptr);
    EXPECT_EQ(point->next_link(&point->common), nullptr);
    told.push_back("gone");
  });
  point->property_state().signal_changed().connect([&] { told.push_back("state"); });
  third->destroy();
  EXPECT_EQ(told, (Log{"gone", "state"}));
  EXPECT_EQ(point->get_state(), straight);
  EXPECT_EQ(station->sent(), Log{"1/1 left"});
  curved->destroy();
  EXPECT_EQ(station->sent(), Log());
  straight->destroy();
  EXPECT_EQ(point->get_state(), nullptr);
  EXPECT_EQ(point->next_link(&point->common), nullptr);
  EXPECT_EQ(point->get_state(), nullptr);
  point->add_state();  // what has states lies in one of them
  EXPECT_EQ(point->get_state(), point->states()[0]);
  station->sent();
  point->destroy();
  EXPECT_EQ(station->sent(), Log());
}

TEST_F(PointTest, takes_a_locomotive_off_the_track_with_the_link_that_it_stands_at) {
  auto* third = &point->add_state();
  auto* a = zone("a");
  a->right.connect(&point->common);
  point->set_input(layout().get_devices().add(new Detector));
  curved->activate();
  auto* lok = new_lok_in(a);
  at(point).occupy();
  at(a).occupy(false);
  EXPECT_EQ(place(lok), "Point 1.common..Point 1.state:Curved");
  third->destroy();
  EXPECT_EQ(held(lok), "Point 1");
  curved->destroy();
  EXPECT_EQ(place(lok) + held(lok), "nowhere");
}

TEST_F(PointTest, lets_its_states_be_deleted_while_there_are_more_than_two) {
  for (PointBase* one : {static_cast<PointBase*>(point), static_cast<PointBase*>(add<Signal>())}) {
    const auto* first = one->states()[0];
    unsigned told = 0;
    one->states()[0]->property_deletable().signal_changed().connect([&] { ++told; });
    EXPECT_FALSE(first->get_deletable());
    auto& third = one->add_state();
    EXPECT_TRUE(first->get_deletable() && third.get_deletable());
    one->add_state();
    EXPECT_EQ(told, 1u);
    one->states()[3]->destroy();
    EXPECT_TRUE(first->get_deletable());
    third.destroy();
    EXPECT_FALSE(first->get_deletable());
    EXPECT_EQ(told, 2u);
  }
  auto* scissor = add<Scissor>();
  for (const auto* state : scissor->states()) EXPECT_FALSE(state->get_deletable());
}

TEST_F(PointTest, keeps_address_and_number_of_an_output_in_the_range_of_its_type) {
  auto& output = point->get_output(1);
  EXPECT_EQ(output.get_address(), Address(Address::Kind::accessory, 1));
  output.set_type(Type::Function);
  output.set_address(Address(3000));
  output.set_output(28);
  output.set_output(29);
  EXPECT_EQ(output.get_output(), 28u);
  output.set_type(Type::Extended);
  EXPECT_EQ(output.get_address(), Address(Address::Kind::output, 2048));
  output.set_type(Type::Basic);
  EXPECT_EQ(output.get_address(), Address(Address::Kind::accessory, 512));
  EXPECT_EQ(output.get_output(), 4u);
  output.set_output(0);
  output.set_output(5);
  EXPECT_EQ(output.get_output(), 4u);
  output.set_address(Address(900));
  EXPECT_EQ(output.get_address(), Address(Address::Kind::accessory, 512));
}

TEST_F(PointTest, lets_go_of_a_device_that_ends_or_cannot_drive_the_type) {
  auto& output = point->get_output(1);
  output.set_device(station);
  output.set_type(Type::Function);
  EXPECT_EQ(output.get_device(), station);
  output.set_type(Type::Servo);
  EXPECT_EQ(output.get_device(), nullptr);
  output.set_device(station);
  output.set_type(Type::Basic);
  EXPECT_EQ(output.get_device(), station);
  station->destroy();
  EXPECT_EQ(output.get_device(), nullptr);
  curved->activate();
}

TEST_F(PointTest, forgets_a_function_that_was_never_sent_with_what_it_was_sent_to) {
  auto& output = point->get_output(1);
  output.set_type(Type::Function);
  auto* own = FakeStation::in_service(false);
  output.set_device(own);
  own->set_active(false);
  curved->activate();
  output.set_output(7);
  output.set_address(Address(20));
  own->set_active(true);
  straight->activate();
  EXPECT_EQ(own->sent(), Log{"20 f7 off"});
}

TEST_F(PointTest, joins_two_ends_of_a_scissor_point_and_none_of_a_signal) {
  auto* scissor = add<Scissor>();
  const struct {
    const char* left;
    const char* right;
    Log coils;
  } states[] = {
      {"top-left", "top-right", {"1/1 left", "1/2 left"}},
      {"top-left", "bottom-right", {"1/1 left", "1/2 right"}},
      {"bottom-left", "top-right", {"1/1 right", "1/2 left"}},
      {"bottom-left", "bottom-right", {"1/1 right", "1/2 right"}},
  };
  const auto way = [&](const char* name) {
    return scissor->get_link_name(scissor->next_link(scissor->get_link(name)));
  };
  for (const unsigned i : {3u, 2u, 1u, 0u}) {
    scissor->states()[i]->activate();
    EXPECT_EQ(station->sent(), states[i].coils);
    EXPECT_EQ(way(states[i].left), states[i].right);
    EXPECT_EQ(way(states[i].right), states[i].left);
    const auto is_closed = [&](const char* name) { return way(name).empty(); };
    EXPECT_EQ(std::ranges::count_if(Corners::names, is_closed), 2);
  }
  scissor->states()[1]->activate();
  scissor->get_state()->destroy();
  EXPECT_EQ(way("top-left"), "top-right");
  EXPECT_EQ(scissor->next_link(nullptr), nullptr);
  station->sent();

  auto* signal = add<Signal>();
  signal->states()[1]->activate();
  EXPECT_EQ(station->sent(), Log{"1/1 right"});
  EXPECT_EQ(signal->states()[0]->get_setting(signal->get_output(1)).servo, -90);
  EXPECT_EQ(signal->get_link("common"), nullptr);
  EXPECT_EQ(signal->next_link(&point->common), nullptr);
  EXPECT_EQ(signal->get_link_name(&point->common), "");
}

}  // namespace
}  // namespace zemblar::test
