// What runs do to locomotives and functions, for good and for a time.

#include "tests/scripts/script_scene.h"

namespace zemblar::test {
namespace {

class Runs : public ScriptScene {
 protected:
  Runs() : lok(new_lok("x")) {
    for (const auto* name : {"A", "B", "C"}) zone(name);
    lok->set_top_speed(160);
  }
  void fill(const char* block, bool full = true) {
    at(dynamic_cast<Block*>(layout().get_blocks().find_child(block))).occupy(full);
  }

  Lok* lok;
};

TEST_F(Runs, while_scripts_overlap_and_come_apart_in_any_order) {
  lok->set_speed(100);
  auto* horn = function(lok, "horn");
  const char* blocks[] = {"A", "B", "C"};
  const unsigned percents[] = {50, 25, 0};
  const unsigned steps[] = {63, 32, 0};
  for (int i = 0; i < 3; ++i) {
    auto* made = script_on(blocks[i], true);
    set_speed(*made, "x", percents[i]);
    command(*made, "set-function", {"x", "horn", i == 1 ? "Off" : "On"});
  }
  std::vector<int> order{0, 1, 2};
  do {
    auto end_order = order;
    do {
      for (const int i : order) fill(blocks[i]);
      auto alive = order;  // oldest first
      for (const int i : end_order) {
        EXPECT_EQ(lok->get_speed_overlay(), steps[alive.back()]) << "the newest that is alive";
        EXPECT_EQ(horn->get_state_overlay(), alive.back() != 1);
        fill(blocks[i], false);
        std::erase(alive, i);
      }
      EXPECT_EQ(lok->get_speed_overlay(), 100u);
      EXPECT_FALSE(horn->get_state_overlay());
      EXPECT_TRUE(layout().script_overlays.empty());
    } while (std::next_permutation(end_order.begin(), end_order.end()));
  } while (std::next_permutation(order.begin(), order.end()));
  EXPECT_EQ(lok->get_speed(), 100u);
  EXPECT_FALSE(horn->get_state());
}

TEST_F(Runs, end_when_all_is_stopped_and_begin_afresh_when_scripts_start) {
  lok->set_speed(100);
  auto* made = script_on("A", true);
  set_speed(*made, "x", 50);
  fill("A");
  EXPECT_EQ(lok->get_speed_overlay(), 63u);
  stop_scripts();
  clock.advance(0s);
  EXPECT_EQ(lok->get_speed_overlay(), 100u);
  EXPECT_EQ(made->num_runs(), 0u);
  EXPECT_EQ(sleeping_scripts(), 1u);
  fill("A", false);
  fill("A");
  EXPECT_EQ(lok->get_speed_overlay(), 100u);
  start_scripts();
  EXPECT_EQ(lok->get_speed_overlay(), 63u);
}

TEST_F(Runs, commands_in_order_with_waits_and_brackets) {
  auto* made = script_on("A");
  std::vector<unsigned> seen;
  const auto see = [&] {
    act(*made, [&](ScriptContext&) { seen.push_back(lok->get_speed_overlay()); });
  };
  set_speed(*made, "x", 100);
  command(*made, "save");
  set_speed(*made, "x", 50);
  see();
  command(*made, "save");
  set_speed(*made, "x", 0);
  wait(*made, 2);
  see();
  command(*made, "restore");
  see();
  command(*made, "restore");
  see();
  command(*made, "restore");  // nothing is left to take back
  command(*made, "save");
  set_speed(*made, "x", 10);
  command(*made, "wait-init-event");
  fill("A");
  EXPECT_EQ(seen, std::vector<unsigned>{63});
  clock.advance(1999ms);
  EXPECT_EQ(seen.size(), 1u);
  clock.advance(1ms);
  EXPECT_EQ(seen, (std::vector<unsigned>{63, 0, 63, 126}));
  EXPECT_EQ(lok->get_speed_overlay(), 13u);
  EXPECT_EQ(made->num_runs(), 1u);
  fill("A", false);
  EXPECT_EQ(lok->get_speed_overlay(), 126u) << "what is left is taken back at the end of the run";
  EXPECT_EQ(lok->get_speed(), 126u) << "what was set without a bracket stays";
  EXPECT_EQ(made->num_runs(), 0u);
}

TEST_F(Runs, levels_that_are_left_go_oldest_first) {
  lok->set_speed(100);
  auto* made = script_on("A", true);
  set_speed(*made, "x", 50);
  command(*made, "save");
  set_speed(*made, "x", 25);
  fill("A");
  std::vector<unsigned> seen;
  const ScopedConnection listening(lok->property_speed_overlay().signal_changed().connect(
      [&] { seen.push_back(lok->get_speed_overlay()); }));
  fill("A", false);
  EXPECT_EQ(seen, (std::vector<unsigned>{32, 100})) << "never back to 50 %";
}

TEST_F(Runs, a_restore_in_a_while_script_takes_its_own_level) {
  lok->set_speed(80);
  auto* made = script_on("A", true);
  set_speed(*made, "x", 50);
  command(*made, "restore");
  set_speed(*made, "x", 25);
  fill("A");
  EXPECT_EQ(lok->get_speed(), 32u) << "for good, by then";
  fill("A", false);
  EXPECT_EQ(lok->get_speed(), 32u);
}

TEST_F(Runs, a_speed_in_percent_or_in_a_part_of_the_top_speed) {
  const struct {
    SpeedArg speed;
    int top;
    unsigned step;
  } speeds[] = {
      {{0, false}, 160, 0},    {{50, false}, 160, 63},   {{100, false}, 160, 126},
      {{1, false}, 160, 1},    {{99, false}, 160, 125},  {{4000000000U, false}, 160, 126},
      {{0, true}, 160, 0},     {{80, true}, 160, 63},    {{159, true}, 160, 125},
      {{160, true}, 160, 126}, {{9999, true}, 160, 126}, {{40, true}, 0, 126},
      {{40, true}, -5, 126},   {{100, true}, 300, 42},
  };
  for (const auto& [speed, top, step] : speeds) {
    auto* made = script_on("A");
    set_speed(*made, "x", speed.speed, speed.km_h);
    lok->set_speed(step == 7 ? 8 : 7);
    lok->set_top_speed(top);
    fill("A");
    EXPECT_EQ(lok->get_speed(), step)
        << speed.speed << (speed.km_h ? " km/h of " : " % of ") << top;
    fill("A", false);
    made->destroy();
  }
}

TEST_F(Runs, the_locomotive_of_the_instance_and_none_where_there_is_none) {
  auto* other = new_lok("y");
  auto* horn = function(other, "horn");
  auto* made = script_on("Any Block", true);
  set_speed(*made, "This Locomotive", 50);
  auto& blow = command(*made, "set-function");
  pick_all(blow, {"", "horn", "On"});
  command(*made, "set-direction", {"This Locomotive", "Reverse"});
  fill("A");
  EXPECT_EQ(made->num_runs(), 1u) << "for the block alone";
  auto* block = dynamic_cast<Block*>(layout().get_blocks().find_child("B"));
  block->set_lok(other);
  EXPECT_EQ(other->get_speed_overlay(), 63u);
  EXPECT_TRUE(horn->get_state_overlay());
  EXPECT_EQ(lok->get_speed_overlay(), 0u);
  block->replace_lok(lok);  // which has no such function
  EXPECT_EQ(other->get_speed_overlay(), 0u);
  EXPECT_FALSE(horn->get_state_overlay());
  EXPECT_EQ(lok->get_speed_overlay(), 63u);
}

TEST_F(Runs, a_pulse_is_fired_in_any_mode_and_never_kept) {
  auto* bell = function(lok, "bell", Function::Type::Pulse);
  int pulses = 0;
  bell->property_state_overlay().signal_changed().connect([&] { ++pulses; });
  for (const bool is_while : {false, true}) {
    for (const auto* state : {"On", "Off"}) {
      auto* made = script_on("A", is_while);
      command(*made, "set-function", {"x", "bell", state});
      pulses = 0;
      fill("A");
      EXPECT_EQ(pulses, is_while || std::string(state) == "On") << is_while << state;
      fill("A", false);
      EXPECT_LE(pulses, 1) << "nothing to take back";
      made->destroy();
    }
  }
}

TEST_F(Runs, each_edge_has_a_run_of_its_own_while_older_ones_wait) {
  auto* made = script_on("A");
  wait(*made, 10);
  command(*made, "wait-init-event");
  for (unsigned runs = 1; runs <= 3; ++runs) {
    fill("A");
    EXPECT_EQ(made->num_runs(), runs);
    fill("A", false);
    clock.advance(1s);
  }
  clock.advance(20s);
  EXPECT_EQ(made->num_runs(), 3u) << "they have missed the end of their instance";
  fill("A");
  fill("A", false);
  EXPECT_EQ(made->num_runs(), 1u) << "an equal one is as good; the last run waits for its time";
}

TEST_F(Runs, any_edit_of_the_commands_ends_the_runs) {
  lok->set_speed(100);
  const struct {
    const char* name;
    std::function<void(Script&)> edit;
  } edits[] = {
      {"add", [](Script& made) { command(made, "save"); }},
      {"remove", [](Script& made) { made.remove_command(0); }},
      {"remove the one that it stands in", [](Script& made) { made.remove_command(1); }},
      {"move", [](Script& made) { made.move_command(0, 1); }},
  };
  for (const auto& [name, edit] : edits) {
    for (const auto* key : {"wait", "wait-init-event"}) {
      auto* made = script_on("A", true);
      set_speed(*made, "x", 50);
      command(*made, key);
      unsigned gone_on = 0;
      act(*made, [&](ScriptContext&) { ++gone_on; });
      fill("A");
      EXPECT_EQ(lok->get_speed_overlay(), 63u);
      clear_status();
      edit(*made);
      clock.advance(0ms);
      EXPECT_EQ(made->num_runs(), 0u) << name << " " << key;
      EXPECT_EQ(lok->get_speed_overlay(), 100u) << name << " " << key;
      EXPECT_EQ(get_status().raw().find("“" + made->get_name().raw()), 0u);
      fill("A");
      fill("B");
      EXPECT_EQ(made->num_runs(), 0u) << "its instance has not been away";
      EXPECT_EQ(gone_on, 0u);
      fill("A", false);
      fill("A");
      EXPECT_EQ(made->num_runs(), 1u);
      made->destroy();
      fill("A", false);
    }
  }
}

TEST_F(Runs, an_exception_ends_a_run_and_takes_back_what_it_did) {
  lok->set_speed(100);
  auto* made = script_on("A", true);
  set_speed(*made, "x", 50);
  act(*made, [](ScriptContext&) { throw std::runtime_error("out of steam"); });
  command(*made, "wait-init-event");
  fill("A");
  EXPECT_EQ(made->num_runs(), 0u);
  EXPECT_EQ(lok->get_speed_overlay(), 100u);
  EXPECT_TRUE(layout().script_overlays.empty());
}

}  // namespace
}  // namespace zemblar::test
