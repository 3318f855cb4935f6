#include "simulator/trains/track_model.h"

#include <gtest/gtest.h>

#include "simulator/trains/track_reader.h"
#include "simulator/trains/track_station.h"
#include "tests/support/small_railway.h"
#include "track/crossing.h"
#include "track/point.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;
using test::Gate;

class TrackModelTest : public test::SmallRailway {
 protected:
  TrackModelTest() {
    model.set_default_length(2000);
    model.signal_event().connect([this](const TrackEvent& event) { write_down(event); });
  }

  void write_down(const TrackEvent& event) {
    static constexpr std::array words{" in ", " out of ", " turns in ", " ends in ", " hits in "};
    if (event.kind == TrackEvent::Kind::left) return;
    log.push_back(event.train->options().name + words[static_cast<std::size_t>(event.kind)] +
                  event.block->get_name().raw());
  }
  std::vector<std::string> take_log() { return std::exchange(log, {}); }

  /// Each with an input of the reader.
  std::vector<Zone*> wired(const std::vector<Zone*>& zones) {
    for (auto* zone : zones) zone->set_input(reader->add_input());
    return zones;
  }
  std::vector<Zone*> bare_row(const std::vector<const char*>& names) {
    auto zones = row(names);
    for (auto* zone : zones) zone->get_input()->destroy();
    return zones;
  }

  /// A train and its locomotive, the decoder's leading end to the right unless told otherwise.
  Train& train(const char* name, unsigned address, BlockLink& towards) {
    auto& train = model.add_train({.name = name, .address = {address, address > 127}});
    EXPECT_TRUE(model.place(train, towards));
    return train;
  }
  static Lok* lok_of(const char* name, unsigned address) {
    auto* lok = new_lok(name);
    lok->get_decoders().front()->set_address(Address(address));
    return lok;
  }
  static std::string head(const Train& train) {
    return train.leading_link()->get_block()->get_name();
  }

  VirtualClock clock;
  TrackModel model{1};
  TrackStation* station = TrackStation::in_service(model);
  TrackReader* reader = layout().get_devices().add(new TrackReader);
  std::vector<std::string> log;
};

using Words = std::vector<std::string>;

TEST_F(TrackModelTest, stops_the_second_train_short_of_the_first_and_lets_it_run_on) {
  model.sensor_options().longest_delay = 100ms;
  model.sensor_options().dropouts_per_minute = 20;
  model.sensor_options().longest_dropout = 100ms;
  const auto zones = wired(bare_row({"A", "B", "C", "D", "E", "F"}));
  auto* first = lok_of("first", 3);
  auto* second = lok_of("second", 1000);
  const auto& ahead = train("1", 3, zones[3]->right);
  const auto& behind = train("2", 1000, zones[0]->right);
  clock.advance(2s);
  ASSERT_EQ(place(first), "D.left..D.right");
  ASSERT_EQ(place(second), "A.left..A.right");
  second->set_speed(126);
  clock.advance(1min);
  EXPECT_EQ(head(behind), "C");
  EXPECT_EQ(model.speed(behind), 0);
  EXPECT_EQ(behind.step(), 0u);
  EXPECT_TRUE(second->get_brake());
  EXPECT_EQ(place(second), "B.left..C.right");
  first->set_speed(60);
  clock.advance(1min);
  EXPECT_EQ(head(ahead), "F");
  EXPECT_EQ(head(behind), "E");  // and there it waits again
  EXPECT_EQ(model.collisions(), 0u);
}

TEST_F(TrackModelTest, brakes_and_turns_round_and_ends_at_the_end_of_the_track) {
  const auto zones = bare_row({"A", "B", "C"});
  auto& one = train("1", 3, zones[1]->right);
  model.command(3, 126, true);
  clock.advance(4s);
  EXPECT_NEAR(model.speed(one), 400, 0.001);
  const double before = model.travelled(one);
  model.command(3, 126, false);
  clock.advance(1s);
  EXPECT_NEAR(model.speed(one), 150, 0.001);
  EXPECT_TRUE(one.forwards());
  clock.advance(1s);
  EXPECT_FALSE(one.forwards());
  EXPECT_EQ(head(one), "C");
  EXPECT_GT(model.travelled(one), before + 320);
  clock.advance(1min);
  EXPECT_EQ(take_log(), (Words{"1 in C", "1 turns in C", "1 in B", "1 in A", "1 ends in A"}));
  EXPECT_EQ(model.speed(one), 0);
  EXPECT_EQ(model.times_run_off(), 1u);
  model.command(3, 126, true);
  clock.advance(1min);
  EXPECT_EQ(take_log(), (Words{"1 turns in A", "1 in B", "1 in C", "1 ends in C"}));
}

TEST_F(TrackModelTest, stops_within_the_distance_that_its_brakes_need) {
  struct {
    double speed, deceleration;
    bool emergency;
    double distance;
  } const cases[] = {{400, 250, false, 320}, {200, 100, false, 200}, {400, 250, true, 400. / 4.5}};
  for (const auto& one : cases) {
    const auto zones = bare_row({"A", "B", "C", "D"});
    auto& train =
        model.add_train({.name = "1", .top_speed = one.speed, .deceleration = one.deceleration});
    ASSERT_TRUE(model.place(train, zones[0]->right));
    model.command(3, 126, true);
    clock.advance(10s);
    const double before = model.travelled(train);
    one.emergency ? model.emergency_stop(3) : model.command(3, 0, true);
    const double at_command = model.travelled(train);
    EXPECT_GE(at_command, before);
    clock.advance(20s);
    EXPECT_NEAR(model.travelled(train) - at_command, one.distance, 0.01);
    model.lift(train);
    layout().new_document(false);
  }
}

TEST_F(TrackModelTest, tells_by_railcom_how_the_locomotive_stands) {
  struct {
    bool to_the_right, invert;
    unsigned side;
    const char* place;
  } const cases[] = {
      {true, false, 2, "A.left..A.right"},
      {false, false, 1, "A.right..A.left"},
      {true, true, 1, "A.left..A.right"},
      {false, true, 2, "A.right..A.left"},
  };
  for (const auto& one : cases) {
    auto* a = zone("A", false);
    a->set_invert(one.invert);
    auto* input = layout().get_devices().add(new TrackReader)->add_input();
    a->set_input(input);
    auto* lok = lok_of("lok", 77);
    auto& on_it = train("1", 77, one.to_the_right ? a->right : a->left);
    clock.advance(1s);
    EXPECT_EQ(place(lok), one.place);
    EXPECT_EQ(input->orientation(), one.side);
    model.lift(on_it);
    layout().new_document(false);
  }
}

TEST_F(TrackModelTest, has_a_point_answer_from_the_side_of_the_zone_that_shares_its_input) {
  for (const bool to_the_right : {true, false}) {
    auto* a = zone("A", false);
    auto* crossing = layout().get_blocks().add(new Crossing);
    a->right.connect(&crossing->links.top_left);
    auto* inputs = layout().get_devices().add(new TrackReader);
    auto* input = inputs->add_input();
    a->set_input(input);
    crossing->set_input(input);
    lok_of("lok", 77);
    auto& links = crossing->links;
    auto& on_it = train("1", 77, to_the_right ? links.bottom_right : links.top_left);
    clock.advance(1s);
    EXPECT_EQ(input->orientation(), to_the_right ? 2u : 1u);
    EXPECT_EQ(input->detected().size(), 1u);
    model.lift(on_it);
    layout().new_document(false);
  }
}

TEST_F(TrackModelTest, shows_detectors_the_vehicles_that_draw_current) {
  for (const bool last_draws : {true, false}) {
    const auto zones = wired(bare_row({"A", "B", "C"}));
    auto& long_train = model.add_train(
        {.name = "1", .length = 3000, .top_speed = 100, .last_vehicle_draws = last_draws});
    ASSERT_TRUE(model.place(long_train, zones[1]->right));
    clock.advance(1s);
    EXPECT_EQ(zones[0]->occupied(), last_draws);
    EXPECT_TRUE(zones[1]->occupied());
    model.command(3, 126, true);
    clock.advance(15s);  // 1.5 m: the locomotive is well inside C
    EXPECT_EQ(zones[1]->occupied(), last_draws);
    EXPECT_TRUE(zones[2]->occupied());
    EXPECT_TRUE(long_train.is_in(zones[1]));
    model.lift(long_train);
    clock.advance(2s);
    EXPECT_FALSE(zones[2]->occupied());
    layout().new_document(false);
    reader = layout().get_devices().add(new TrackReader);
  }
}

TEST_F(TrackModelTest, stops_at_a_point_that_is_set_against_it_and_goes_on_when_it_is_not) {
  auto* a = zone("A", false);
  auto* gate = layout().get_blocks().add(new Gate);
  auto* b = zone("B", false);
  a->right.connect(&gate->left);
  gate->right.connect(&b->left);
  gate->set_open(false);
  auto& one = train("1", 3, a->right);
  model.command(3, 126, true);
  clock.advance(30s);
  EXPECT_EQ(take_log(), Words{"1 ends in A"});
  gate->set_open(true);
  model.command(3, 100, true);
  clock.advance(8s);
  EXPECT_EQ(head(one), "B");
  gate->set_open(false);  // behind it, or under it: it stands on its rails
  clock.advance(30s);
  EXPECT_EQ(head(one), "B");
}

TEST_F(TrackModelTest, reports_two_trains_in_one_block) {
  const auto zones = bare_row({"A", "B", "C"});
  auto& one = train("1", 3, zones[0]->right);
  auto& two = train("2", 4, zones[2]->left);
  auto& three = model.add_train({.name = "3"});
  EXPECT_FALSE(model.place(three, zones[2]->left));
  model.command(3, 126, true);
  model.command(4, 60, true);
  clock.advance(1min);
  EXPECT_EQ(take_log(), (Words{"1 in B", "2 hits in B"}));
  EXPECT_EQ(model.speed(one) + model.speed(two), 0);
  EXPECT_EQ(model.collisions(), 1u);
}

TEST_F(TrackModelTest, stands_without_track_power_and_goes_on_with_it) {
  const auto zones = bare_row({"A", "B", "C", "D"});
  auto& one = train("1", 3, zones[0]->right);
  model.command(3, 126, true);
  clock.advance(3s);
  model.set_power(false);
  clock.advance(1s);
  EXPECT_EQ(model.speed(one), 0);
  model.command(3, 63, false);
  clock.advance(5s);
  EXPECT_EQ(model.speed(one), 0);
  model.set_power(true);
  clock.advance(3s);
  EXPECT_NEAR(model.speed(one), 200, 0.001);
  EXPECT_FALSE(one.forwards());
}

TEST_F(TrackModelTest, is_the_same_again_from_the_same_seed) {
  const auto journey = [this](std::uint64_t seed) {
    TrackModel other(seed);
    other.set_default_length(2000);
    other.sensor_options() = {.longest_delay = 150ms,
                              .dropouts_per_minute = 30,
                              .missing = 0.1,
                              .doubled = 0.1,
                              .late = 0.1,
                              .mute = 0.2};
    layout().new_document(false);
    auto zones = row({"A", "B", "C", "D"});
    zones[3]->right.connect(&zones[0]->left);
    std::string told;
    auto* inputs = layout().get_devices().add(new TrackReader);
    const auto start = clock.now();
    for (auto* zone : zones) {
      zone->set_input(inputs->add_input());
      zone->signal_occupied().connect([this, &told, start, zone] {
        told += std::to_string((clock.now() - start) / 1ms) + zone->get_name().raw();
      });
    }
    auto& train = other.add_train({.name = "1"});
    other.place(train, zones[0]->right);
    other.command(3, 100, true);
    clock.advance(5min);
    other.lift(train);
    return std::pair(std::hash<std::string>()(told), other.sensors().faults());
  };
  const auto first = journey(7);
  EXPECT_GT(first.second, 50u);
  EXPECT_EQ(journey(7), first);
  EXPECT_NE(journey(8), first);
}

TEST_F(TrackModelTest, survives_what_ends_under_a_train) {
  const auto zones = wired(bare_row({"A", "B", "C"}));
  lok_of("lok", 3);
  auto& one = train("1", 3, zones[0]->right);
  model.command(3, 126, true);
  clock.advance(3s);
  zones[0]->get_input()->destroy();
  clock.advance(2s);
  EXPECT_EQ(head(one), "B");
  zones[1]->destroy();
  EXPECT_FALSE(one.on_track());
  clock.advance(10s);
  model.command(3, 50, false);
  EXPECT_TRUE(model.place(one, zones[2]->left));
  layout().new_document(false);
  EXPECT_FALSE(one.on_track());
}

TEST_F(TrackModelTest, takes_a_train_off_a_point_that_loses_the_branch_under_it) {
  const auto zones = wired(bare_row({"A"}));
  auto* point = layout().get_points().add(new Point);
  point->add_state();
  zones[0]->right.connect(&point->common);
  lok_of("lok", 3);
  auto& one = train("1", 3, zones[0]->right);
  model.command(3, 126, true);
  for (int i = 0; i < 20 && head(one) == "A"; ++i) clock.advance(1s);
  EXPECT_EQ(head(one), "Point 1");
  point->states()[1]->destroy();
  EXPECT_TRUE(one.on_track());  // it stands on the other branch
  point->states()[0]->destroy();
  EXPECT_FALSE(one.on_track());
}

}  // namespace
}  // namespace zemblar::simulator
