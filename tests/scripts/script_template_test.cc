// The scripts that templates write, read as a person reads them.

#include "scripts/script_template.h"

#include "tests/scripts/script_scene.h"
#include "track/point.h"
#include "track/signal.h"

namespace zemblar::test {
namespace {

class Templates : public ScriptScene {
 protected:
  static std::string read(const Script& script) {
    std::string text = script.get_name().raw() + "\n" + (script.get_while() ? "While " : "When ");
    for (unsigned i = 0; i < script.get_num_conditions(); ++i) {
      const auto& line = *script.get_condition(i);
      if (i != 0) text += line.get_or_flag() ? "Or " : "And ";
      text += sentence(line) + "\n";
      EXPECT_TRUE(line.is_armed());
    }
    for (unsigned i = 0; i < script.get_num_commands(); ++i) {
      text += sentence(*script.get_command(i)) + "\n";
    }
    return text;
  }
  static const ScriptTemplate& offered(const char* name) {
    const auto& all = script_templates();
    return *std::ranges::find(all, std::string_view(name), &ScriptTemplate::name);
  }
  /// About a train that goes from the second zone into the third one.
  static void make_at(const std::vector<Zone*>& zones, std::string_view name, Signal& signal) {
    auto* stop = signal.states()[0];
    auto* go = signal.states()[1];
    auto* before = zones[1];
    auto* behind = zones[2];
    if (name == "Stop") {
      offered("Stop at a Signal")
          .make({{.block = before}, {.state = stop}, {.state = go}, {.block = behind}});
    } else if (name == "Block") {
      offered("Block Signal").make({{.block = behind}, {.state = stop}, {.state = go}});
    } else if (name == "Crossing") {
      offered("Crossing Guard").make({{.block = behind}, {.block = before}, {}, {}, {}});
    } else {
      offered("Station Stop").make({{.block = before}, {.block = behind}, {.number = 10}});
    }
  }
  static std::string made(const char* name, const ScriptTemplate::Answers& answers) {
    EXPECT_EQ(what_lacks(offered(name), answers), "") << name;
    std::string text;
    for (const auto* script : offered(name).make(answers)) text += read(*script);
    return text;
  }
};

TEST_F(Templates, write_lines_that_can_be_read) {
  auto* a = zone("A");
  auto* b = zone("B");
  auto* x = new_lok("x");
  auto* signal = layout().get_points().add(new Signal);
  signal->set_name("Exit");
  auto* stop = signal->states()[0];
  auto* go = signal->states()[1];
  stop->set_name("red");
  go->set_name("green");
  auto* point = layout().get_points().add(new Point);
  point->set_name("P");
  point->states()[0]->set_name("straight");

  EXPECT_EQ(made("Stop at a Signal", {{.block = a}, {.state = stop}, {.state = go}, {.block = b}}),
            "Stop at Exit\nWhen B is Unoccupied\nAnd Exit is red\nAnd A is Occupied\n"
            "Wait until A is free (for any time)\n"
            "Save\nSet This Locomotive Speed to 0%\nWait until Exit is green (for any time)\n"
            "Wait until B is free (for any time)\nWait until A is free (for any time)\nRestore\n");
  EXPECT_EQ(made("Block Signal", {{.block = b}, {.state = stop}, {.state = go}}),
            "Exit: red\nWhen B is Occupied\nSet Exit to red\n"
            "Exit: green\nWhen B is Unoccupied\nSet Exit to green\n");
  EXPECT_EQ(signal->get_state(), go) << "awake at once";
  EXPECT_EQ(made("Shuttle", {{.lok = x},
                             {.block = a},
                             {.block = b},
                             {.block = b},
                             {},
                             {.number = 5},
                             {.number = 60}}),
            "Shuttle Leaves A\nWhen A is Occupied\nAnd x is in This Block\n"
            "Wait 2 seconds\nSet x Speed to 0%\n"
            "Wait 5 seconds\nWait until B is free (for any time)\nSet x Forwards\n"
            "Set x Speed to 60%\n"
            "Shuttle Leaves B\nWhen B is Occupied\nAnd x is in This Block\n"
            "Wait 2 seconds\nSet x Speed to 0%\n"
            "Wait 5 seconds\nSet x Reverse\nSet x Speed to 60%\n");
  EXPECT_EQ(made("Station Stop", {{.block = a}, {.block = b}, {.number = 8}}),
            "Station Stop in A\nWhen A is Occupied\nWait 2 seconds\n"
            "Wait until B is free (for any time)\nWait until A is free (for any time)\n"
            "Save\nSet This Locomotive Speed to 0%\nWait 8 seconds\n"
            "Wait until B is free (for any time)\nWait until A is free (for any time)\nRestore\n");
  EXPECT_EQ(made("Route by Entry Signal", {{.state = go},
                                           {.state = point->states()[0]},
                                           {},
                                           {},
                                           {},
                                           {.block = a},
                                           {.state = stop}}),
            "Route by Exit\nWhen Exit is green\nSet P to straight\n"
            "Exit Goes Back\nWhen Exit is green\nAnd A is Occupied\nSet Exit to red\n");
  EXPECT_EQ(made("Crossing Guard", {{.block = b}, {.block = a}, {}, {.block = zone("C")}, {}}),
            "Guard of B\nWhile A is Occupied\nOr C is Occupied\nReserve B for This Locomotive\n");

  const auto& guard = offered("Crossing Guard");
  EXPECT_EQ(what_lacks(guard, {{}, {.block = a}, {}, {}, {}}),
            "“Crossing, or another block” is still to be chosen.");
  EXPECT_EQ(what_lacks(guard, {{.block = a}, {.block = b}, {}, {.block = a}, {}}),
            "“Crossing, or another block” and “Third approach” are the same.");
}

// A train comes from Z into A and finds another one in X. Whatever is made there, in whatever
// order, it goes on when that has left; in a station it stops first, once.
TEST_F(Templates, go_together_at_one_block) {
  const std::vector<std::vector<std::string_view>> together{{"Stop", "Block", "Crossing"},
                                                            {"Crossing", "Station"}};
  for (auto names : together) {
    std::ranges::sort(names);
    do {
      const auto zones = row({"Z", "A", "X", "C"});
      auto* signal = layout().get_points().add(new Signal);
      for (const auto name : names) make_at(zones, name, *signal);
      auto* first = new_lok_in(zones[2], "first");
      auto* second = new_lok_in(zones[0], "second");
      second->set_speed(50);
      at(zones[1]).occupy();
      at(zones[0]).occupy(false);
      clock.advance(3s);
      EXPECT_TRUE(second->get_brake());
      at(zones[3]).occupy();
      clock.advance(100ms);
      at(zones[2]).occupy(false);
      clock.advance(8s);
      const bool is_station = names.size() == 2;
      EXPECT_EQ(second->get_speed_overlay(), is_station ? 0u : 50u);
      clock.advance(1min);
      EXPECT_EQ(zones[2]->get_lok(), second);
      EXPECT_FALSE(second->get_brake());
      EXPECT_EQ(second->get_speed_overlay(), 50u) << names[0] << names[1];
      if (is_station) {
        zones[2]->replace_lok(first), zones[2]->replace_lok(nullptr);
        clock.advance(5s);
        EXPECT_EQ(second->get_speed_overlay(), 50u) << "it has stopped already";
      }
      first->destroy(), second->destroy();
      auto& scripts = layout().get_scripts();
      while (scripts.child_count() != 0) scripts.child_at(0)->destroy();
      for (auto* one : zones) one->destroy();
    } while (std::ranges::next_permutation(names).found);
  }
}

TEST_F(Templates, a_shuttle_is_left_alone_when_another_train_comes_into_its_end) {
  const auto zones = row({"A", "B", "C", "D"});
  auto* railcar = new_lok_in(zones[2], "railcar");
  railcar->set_direction(Direction::Reverse);
  railcar->set_speed(60);
  offered("Shuttle").make(
      {{.lok = railcar}, {.block = zones[0]}, {}, {.block = zones[3]}, {}, {.number = 5}, {}});
  auto* other = new_lok_in(zones[0], "other");
  clock.advance(10s);
  EXPECT_EQ(railcar->get_direction(), Direction::Reverse);
  EXPECT_EQ(railcar->get_speed(), 60u);
  other->destroy();
  at(zones[0]).occupy(false);
  at(zones[1]).occupy();
  at(zones[0]).occupy();
  clock.advance(3s);
  EXPECT_EQ(railcar->get_speed(), 0u);
  clock.advance(5s);
  EXPECT_EQ(railcar->get_direction(), Direction::Forwards);
}

// It has run past its platform, and is braked there.
TEST_F(Templates, a_train_goes_on_from_a_station_when_its_brake_is_off) {
  const auto zones = row({"A", "B", "C", "D"});
  offered("Station Stop").make({{.block = zones[1]}, {.block = zones[2]}, {.number = 5}});
  auto* lok = new_lok_in(zones[0]);
  lok->set_speed(50);
  zones[3]->replace_lok(new_lok("other"));
  at(zones[3]).occupy();
  at(zones[1]).occupy();
  clock.advance(3s);
  EXPECT_EQ(lok->get_speed_overlay(), 0u);
  at(zones[2]).occupy();
  EXPECT_TRUE(lok->get_brake());
  clock.advance(1min);
  zones[3]->replace_lok(nullptr);
  at(zones[3]).occupy(false);
  clock.advance(0ms);
  EXPECT_EQ(lok->get_speed_overlay(), 50u);
}

// The trap is a stop that is taken back under the brake, which sends nothing.
TEST_F(Templates, a_train_goes_on_from_a_signal_that_rises_while_another_one_is_in_the_way) {
  const auto zones = row({"A", "B", "C"});
  auto* signal = layout().get_points().add(new Signal);
  make_at({nullptr, zones[1], zones[2]}, "Stop", *signal);
  auto* lok = new_lok_in(zones[0]);
  lok->set_speed(50);
  at(zones[1]).occupy();
  EXPECT_EQ(lok->get_speed_overlay(), 0u);
  zones[2]->replace_lok(new_lok("other"));
  at(zones[2]).occupy();
  EXPECT_TRUE(lok->get_brake());
  signal->set_state(signal->states()[1]);
  zones[2]->replace_lok(nullptr);
  at(zones[2]).occupy(false);
  clock.advance(0ms);
  EXPECT_FALSE(lok->get_brake());
  EXPECT_EQ(lok->get_speed_overlay(), 50u);
  at(zones[2]).occupy();
  at(zones[0]).occupy(false);
  signal->set_state(signal->states()[0]);
  EXPECT_EQ(lok->get_speed_overlay(), 50u) << "its head has passed the signal";
}

// The block behind the signal and the one between them have one detector: the first one reads free
// while the brake is still on.
TEST_F(Templates, a_train_under_its_brake_is_stopped_at_a_signal_when_the_brake_is_off) {
  const auto zones = row({"Z", "A", "M", "B", "C"});
  auto* shared = layout().get_devices().add(new Detector);
  for (const auto i : {2u, 3u}) zones[i]->set_input(shared);
  auto* signal = layout().get_points().add(new Signal);
  make_at({nullptr, zones[1], zones[3]}, "Stop", *signal);
  auto* other = new_lok_in(zones[1], "other");
  shared->occupy();
  at(zones[1]).occupy(false);
  at(zones[4]).occupy();
  EXPECT_EQ(place(other), "M.left..C.right");
  auto* lok = new_lok_in(zones[0]);
  lok->set_speed(50);
  at(zones[1]).occupy();
  at(zones[0]).occupy(false);
  EXPECT_TRUE(lok->get_brake());
  at(zones[3]).occupy(false);
  clock.advance(1s);
  EXPECT_FALSE(lok->get_brake());
  EXPECT_EQ(lok->get_speed_overlay(), 0u);
  signal->set_state(signal->states()[1]);
  clock.advance(0ms);
  EXPECT_EQ(lok->get_speed_overlay(), 50u);
}

}  // namespace
}  // namespace zemblar::test
