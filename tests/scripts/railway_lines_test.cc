// Lines about points, signals, trains and track power, and the commands that wait for them.

#include "core/global_options.h"
#include "tests/scripts/script_scene.h"
#include "tests/support/fake_station.h"
#include "track/point.h"
#include "track/signal.h"

namespace zemblar::test {
namespace {

class RailwayLines : public ScriptScene {
 protected:
  RailwayLines() {
    for (const auto* name : {"A", "B"}) zone(name);
  }
  static Signal* add_signal(const char* name) {
    auto* made = layout().get_points().add(new Signal);
    made->set_name(name);
    made->states()[0]->set_name("red");
    made->states()[1]->set_name("green");
    return made;
  }
  static ScriptEvent& condition_of(Script& script, const char* key,
                                   const std::vector<std::string>& choices) {
    auto* line = create_script_event(key);
    script.add_condition(line);
    pick_all(*line, choices);
    return *line;
  }
  static Zone& block(const char* name) {
    return dynamic_cast<Zone&>(*layout().get_blocks().find_child(name));
  }
  static void fill(const char* name, bool full = true) { at(&block(name)).occupy(full); }
  void report(Script& script, const char* text) {
    act(script, [this, text](ScriptContext&) { told.emplace_back(text); });
  }
  std::vector<std::string> news() {
    clock.advance(0ms);
    return std::exchange(told, {});
  }
  using News = std::vector<std::string>;

  Signal* signal = add_signal("Exit");
  PointState* stop = signal->states()[0];
  PointState* go = signal->states()[1];
  Lok* lok = new_lok("x");
  News told;
};

TEST_F(RailwayLines, a_signal_that_changes_starts_its_scripts_and_keeps_what_lines_before_found) {
  auto* made = script();
  auto& line = condition_of(*made, "point-state", {"Exit", "green"});
  EXPECT_EQ(sentence(line), "Exit is green");
  EXPECT_TRUE(line.is_armed());
  report(*made, "green");
  signal->set_state(go);
  EXPECT_EQ(told, News{"green"}) << "at once";
  signal->set_state(stop);
  signal->set_state(go);
  EXPECT_EQ(news(), (News{"green", "green"}));

  auto* both = script_on("A");
  condition_of(*both, "point-state", {"Exit", "red"});
  act(*both, [this](ScriptContext& context) {
    told.push_back(context.block() ? context.block()->get_name() : "no block");
  });
  fill("A");
  EXPECT_EQ(news(), News{});
  signal->set_state(stop);
  EXPECT_EQ(news(), News{"A"});

  go->destroy();
  EXPECT_EQ(sentence(line), "Exit is (No State Selected)");
  EXPECT_EQ(news(), News{});
  signal->destroy();
  EXPECT_EQ(sentence(line), "(No Point or Signal Selected) is (No State Selected)");
  EXPECT_FALSE(line.is_armed());
  EXPECT_FALSE(line.sleeps());
}

TEST_F(RailwayLines, trains_that_are_held_stand_drive_or_are_lost_start_scripts) {
  const std::pair<const char*, const char*> states[] = {{"is held", "held"},
                                                        {"is standing", "stands"},
                                                        {"is driving", "drives"},
                                                        {"has no place", "lost"}};
  for (const auto& [choice, text] : states) {
    auto* made = script();
    report(*made, text);
    condition_of(*made, "lok-state", {"Any Locomotive", choice});
  }
  EXPECT_EQ(news(), (News{"stands", "lost"}));
  lok->set_speed(40);
  EXPECT_EQ(news(), News{"drives"});
  lok->set_brake(true);
  EXPECT_EQ(news(), (News{"held", "stands"}));
  lok->set_brake(false);
  EXPECT_EQ(news(), News{"drives"});
  lok->set_emergency_stop(true);
  EXPECT_EQ(news(), News{"stands"});
  at(&block("A")).see(lok, 2);
  at(&block("A")).occupy(false);
  EXPECT_EQ(news(), News{"lost"}) << "after it had a place";

  auto* here = script_on("B");
  condition_of(*here, "lok-state", {"x", "is in This Block"});
  report(*here, "here");
  auto* nowhere = script();
  condition_of(*nowhere, "lok-state", {"x", "is in This Block"});
  report(*nowhere, "nowhere");
  EXPECT_FALSE(nowhere->get_condition(0)->is_armed());
  EXPECT_FALSE(nowhere->sleeps());
  auto* y = new_lok("y");
  at(&block("B")).see(y, 2);
  EXPECT_EQ(news(), News{"stands"}) << "the new one";
  y->destroy();
  at(&block("B")).occupy(false);
  at(&block("B")).see(lok, 2);
  EXPECT_EQ(news(), News{"here"});

  auto* shadow = script(true);
  condition_of(*shadow, "lok-state", {"x", "is standing"});
  set_speed(*shadow, "This Locomotive", 100);
  EXPECT_EQ(sentence(*shadow->get_condition(0)), "x is standing");
  lok->destroy();
  EXPECT_EQ(sentence(*shadow->get_condition(0)), "(No Locomotive Selected) is standing");
  EXPECT_EQ(shadow->num_runs(), 0u);
}

TEST_F(RailwayLines, track_power_starts_scripts) {
  auto* made = script();
  report(*made, "off");
  auto& line = condition_of(*made, "track-power", {"Off"});
  EXPECT_EQ(sentence(line), "Track Power is Off");
  EXPECT_EQ(news(), News{"off"}) << "no station is there";
  FakeStation::in_service();
  auto* station = layout().get_devices().add(new FakeStation(2));
  station->set_active(true);
  layout().set_track_power(true);
  EXPECT_EQ(news(), News{});
  layout().set_track_power(false);
  EXPECT_EQ(news(), News{"off"});
}

TEST_F(RailwayLines, a_state_that_was_set_for_a_time_is_taken_back_whatever_order_scripts_end_in) {
  auto* caution = &signal->add_state();
  caution->set_name("yellow");
  signal->set_state(stop);
  auto* older = script_on("A", true);
  command(*older, "set-point", {"Exit", "green"});
  auto* newer = script_on("B", true);
  command(*newer, "set-point", {"Exit", "yellow"});
  const auto now = [this] { return signal->get_state()->get_name().raw(); };
  fill("A");
  EXPECT_EQ(now(), "green");
  fill("B");
  EXPECT_EQ(now(), "yellow");
  fill("A", false);
  EXPECT_EQ(now(), "yellow") << "the newer one stays";
  fill("B", false);
  EXPECT_EQ(now(), "red");

  fill("A"), fill("B"), fill("B", false);
  EXPECT_EQ(now(), "green") << "the older one returns";
  signal->set_state(caution);
  fill("A", false);
  EXPECT_EQ(now(), "yellow") << "as somebody has set it meanwhile";

  fill("A"), fill("B");
  go->destroy();
  fill("B", false);
  EXPECT_EQ(now(), "yellow") << "what it would go back to has ended";
  fill("B");
  signal->destroy();
  fill("A", false), fill("B", false);
  EXPECT_EQ(older->num_runs() + newer->num_runs(), 0u);
}

TEST_F(RailwayLines, a_point_under_a_train_is_protected_if_that_is_wanted) {
  auto* point = layout().get_points().add(new Point);
  auto& detector = *layout().get_devices().add(new Detector);
  point->set_input(&detector);
  const auto name = point->get_name().raw();
  const auto is_curved = [&] { return point->get_state() == point->states()[1]; };
  auto* sets = script_on("A");
  command(*sets, "set-point", {name, "Curved"});
  auto* lends = script_on("B", true);
  command(*lends, "set-point", {name, "Curved"});
  const auto again = [](const char* block) { fill(block, false), fill(block); };
  detector.occupy();
  again("A");
  EXPECT_TRUE(is_curved()) << "nobody has asked for it";

  GlobalOptions::get().set_points_protected(true);
  const auto reset = [&] { point->set_state(point->states()[0]); };
  reset();
  again("A");
  EXPECT_FALSE(is_curved());
  EXPECT_EQ(get_status(), name + " stays as it is: its block is occupied.");
  again("B");
  EXPECT_FALSE(is_curved());
  point->set_state(point->states()[1]);
  fill("B", false);
  EXPECT_TRUE(is_curved()) << "this run has not set it";
  reset();
  detector.occupy(false);
  fill("B");
  EXPECT_TRUE(is_curved());
  point->set_lok(lok);
  fill("B", false);
  EXPECT_TRUE(is_curved()) << "it is not thrown back under a train either";
  EXPECT_EQ(get_status(), name + " stays as it is: x is there.");
  point->clear_lok(lok);
  reset();
  const Reservation awaited(*point, *lok);
  EXPECT_EQ(point->get_lok(), lok);
  again("A");
  EXPECT_TRUE(is_curved()) << "its way is chosen before the train comes";
  GlobalOptions::get().set_points_protected(false);
}

TEST_F(RailwayLines, a_run_waits_for_a_block_or_a_signal_and_no_longer_than_it_is_told) {
  auto* made = script_on("A");
  auto& until_free = command(*made, "wait-block", {"B", "free"});
  EXPECT_EQ(sentence(until_free), "Wait until B is free (for any time)");
  report(*made, "free");
  auto& until_green = command(*made, "wait-point", {"Exit", "green"});
  until_green.set_spin_value(3, 5);
  EXPECT_EQ(sentence(until_green), "Wait until Exit is green (5 seconds at most)");
  report(*made, "green");

  block("B").replace_lok(lok);
  fill("A");
  clock.advance(1h);
  EXPECT_EQ(news(), News{});
  fill("B");
  block("B").replace_lok(nullptr);
  EXPECT_EQ(news(), News{}) << "still occupied";
  fill("B", false);
  EXPECT_EQ(news(), News{"free"});
  signal->set_state(go);
  EXPECT_EQ(news(), News{"green"});
  EXPECT_EQ(made->num_runs(), 0u);

  signal->set_state(stop);
  block("B").replace_lok(lok);
  fill("A", false), fill("A");
  EXPECT_EQ(news(), News{});
  block("B").replace_lok(nullptr);
  EXPECT_EQ(news(), News{"free"}) << "of the train that held it";
  clock.advance(4900ms);
  EXPECT_EQ(news(), News{});
  clock.advance(200ms);
  EXPECT_EQ(news(), News{"green"}) << "the time is over";
}

TEST_F(RailwayLines, a_wait_for_what_ends_ends_the_run_and_says_so) {
  const std::pair<const char*, std::function<void()>> ends[] = {
      {"the block", [] { block("B").destroy(); }},
      {"the state", [this] { go->destroy(); }},
  };
  fill("B");
  for (const auto& [what, end] : ends) {
    auto* made = script_on("A", true);
    set_speed(*made, "x", 50);
    if (made->get_position() == 0) {
      command(*made, "wait-block", {"B", "free"});
    } else {
      command(*made, "wait-point", {"Exit", "green"});
    }
    report(*made, "went on");
    fill("A");
    EXPECT_NE(lok->get_speed_overlay(), 0u);
    clear_status();
    end();
    EXPECT_EQ(news(), News{}) << what;
    EXPECT_EQ(get_status(), made->get_name() + " stops: What it waits for is not there.");
    EXPECT_EQ(made->num_runs(), 0u);
    EXPECT_EQ(lok->get_speed_overlay(), 0u) << "taken back";
    fill("A", false);
  }
}

TEST_F(RailwayLines, waits_end_with_their_script_and_their_line) {
  auto* edited = script_on("A");
  command(*edited, "wait-block", {"This Block", "free"});
  report(*edited, "went on");
  auto* deleted = script_on("A");
  command(*deleted, "wait-point", {"Exit", "green"});
  report(*deleted, "went on");
  fill("A");
  EXPECT_EQ(edited->num_runs() + deleted->num_runs(), 2u);
  edited->remove_command(0);
  deleted->destroy();
  signal->set_state(go);
  fill("A", false);
  EXPECT_EQ(news(), News{});
  EXPECT_EQ(edited->num_runs(), 0u);
}

TEST_F(RailwayLines, a_script_runs_another_for_its_own_block_and_never_itself_without_end) {
  auto* worker = script();
  act(*worker, [this](ScriptContext& context) {
    told.push_back(context.block()->get_name() + (context.lok() ? " with x" : ""));
  });
  auto* caller = script_on("A");
  command(*caller, "run-script", {worker->get_name()});
  at(&block("A")).see(lok, 2);
  EXPECT_EQ(news().back(), "A with x");

  auto* first = script_on("B");
  auto* second = script();
  command(*first, "run-script", {second->get_name()});
  command(*second, "run-script", {first->get_name()});
  report(*first, "done");
  fill("B");
  EXPECT_NE(get_status().find("without a wait in between"), std::string::npos);
  EXPECT_LE(news().size(), 2u);
  EXPECT_EQ(first->num_runs() + second->num_runs(), 0u);

  second->remove_command(0);
  wait(*second, 1);
  command(*second, "run-script", {first->get_name()});
  fill("B", false), fill("B");
  clock.advance(10500ms);
  EXPECT_EQ(news().size(), 11u) << "once a second";
}

TEST_F(RailwayLines, scripts_that_set_each_other_off_for_ever_are_slowed_down_and_named) {
  add_signal("Entry");
  const struct {
    const char *from, *state, *to, *next;
  } circle[] = {{"Exit", "green", "Entry", "green"},
                {"Entry", "green", "Exit", "red"},
                {"Exit", "red", "Entry", "red"},
                {"Entry", "red", "Exit", "green"}};
  for (const auto& [from, state, to, next] : circle) {
    auto* made = script();
    command(*made, "set-point", {to, next});
    condition_of(*made, "point-state", {from, state});
  }
  unsigned changes = 0;
  signal->signal_state_changed().connect([&] { ++changes; });
  for (auto* state : {stop, go}) signal->set_state(state), clock.advance(0ms);
  clock.advance(10s);
  EXPECT_LT(changes, 1000u);
  EXPECT_GT(changes, 30u);
  EXPECT_NE(get_status().find("is set off again and again"), std::string::npos) << get_status();
  layout().get_scripts().child_at(1)->destroy();
  clock.advance(10s);
  EXPECT_EQ(get_status(), "");
}

TEST_F(RailwayLines, runs_that_wait_for_each_other_for_ever_are_slowed_down_and_named) {
  auto* other = add_signal("Entry");
  // Each waits for red, makes that green, starts its successor, and makes the other one red.
  const std::pair<const char*, const char*> signals[] = {{"Exit", "Entry"}, {"Entry", "Exit"}};
  signal->set_state(go);
  other->set_state(other->states()[1]);
  for (const auto& [mine, others] : signals) {
    auto* made = script_on("A");
    command(*made, "wait-point", {mine, "red"});
    command(*made, "set-point", {mine, "green"});
    command(*made, "run-script", {made->get_name()});
    command(*made, "set-point", {others, "red"});
  }
  fill("A");
  unsigned changes = 0;
  signal->signal_state_changed().connect([&] { ++changes; });
  signal->set_state(stop);
  EXPECT_LT(changes, 10u) << "the loop has its turn";
  clock.advance(10s);
  EXPECT_LT(changes, 1000u);
  EXPECT_GT(changes, 30u);
  EXPECT_NE(get_status().find("is set off again and again"), std::string::npos) << get_status();
}

TEST_F(RailwayLines, a_train_that_a_script_stops_stands_and_a_brake_is_sent_before_a_script_hears) {
  auto* station = FakeStation::in_service();
  lok->set_speed(40);
  auto* slow = script_on("A", true);
  set_speed(*slow, "x", 0);
  auto* hears = script();
  condition_of(*hears, "lok-state", {"x", "is standing"});
  report(*hears, "stands");
  fill("A");
  EXPECT_EQ(news(), News{"stands"});
  fill("A", false);
  EXPECT_EQ(news(), News{});
  station->sent();
  auto* held = script();
  condition_of(*held, "lok-state", {"x", "is held"});
  act(*held, [&](ScriptContext&) { EXPECT_EQ(station->sent(), Log{"3 speed 0"}); });
  report(*held, "held");
  lok->set_brake(true);
  EXPECT_EQ(news(), (News{"stands", "held"}));
  lok->set_actual_speed(40);
  lok->set_top_speed(200);
  EXPECT_EQ(news(), News{});
}

TEST_F(RailwayLines, a_block_is_reserved_by_one_run_after_another_and_never_for_longer) {
  auto* x = lok;
  auto* y = new_lok("y");
  const auto guard = [this](const char* approach) {
    auto* made = script_on(approach, true);
    auto& line = command(*made, "reserve", {"This Locomotive", "C"});
    EXPECT_EQ(sentence(line), "Reserve C for This Locomotive");
    report(*made, approach);
    return made;
  };
  auto* c = zone("C");
  auto* first = guard("A");
  auto* second = guard("B");
  at(c).occupy();
  at(&block("A")).see(x, 2);
  EXPECT_EQ(news(), News{});
  EXPECT_EQ(get_status(), "x waits for C.");
  at(&block("B")).see(y, 2);
  at(c).occupy(false);
  EXPECT_EQ(news(), News{"A"});
  EXPECT_EQ(c->get_lok(), x);
  EXPECT_EQ(get_status(), "y waits for C.");
  first->set_while(true);
  command(*first, "say");  // an edit ends the run
  EXPECT_EQ(news(), News{"B"});
  EXPECT_NE(get_status(), "y waits for C.");
  second->destroy();
  EXPECT_EQ(c->get_lok(), nullptr);

  auto* releases = script_on("A");
  command(*releases, "reserve", {"y", "C"});
  command(*releases, "release", {"C"});
  wait(*releases, 1);
  report(*releases, "done");
  fill("A", false), fill("A");
  EXPECT_EQ(releases->num_runs(), 1u);
  EXPECT_EQ(c->get_lok(), nullptr);
  clock.advance(1s);
  EXPECT_EQ(news(), News{"done"});

  at(c).occupy();
  releases->remove_command(1);
  fill("A", false), fill("A");
  c->destroy();
  EXPECT_EQ(get_status(), releases->get_name() + " stops: What it reserves is not there.");
  EXPECT_EQ(releases->num_runs(), 0u);
}

TEST_F(RailwayLines, what_is_reserved_ends_with_the_condition_of_the_run) {
  const auto zones = row({"Z", "N", "C"});
  auto* guard = script_on("N", true);
  const auto comes = [&] {
    auto* train = new_lok_in(zones[0], "train");
    at(zones[1]).occupy();
    at(zones[0]).occupy(false);
    clock.advance(0ms);
    return train;
  };
  const auto turns_away = [&](Lok* train) {
    train->set_direction(Direction::Reverse);
    at(zones[0]).occupy();
    at(zones[1]).occupy(false);
    clock.advance(0ms);
  };
  command(*guard, "reserve", {"This Locomotive", "C"});
  at(zones[2]).see(new_lok("other"), 2);
  auto* train = comes();
  EXPECT_EQ(get_status(), "train waits for C.");
  turns_away(train);
  EXPECT_EQ(guard->num_runs(), 0u);
  EXPECT_EQ(get_status(), "");
  zones[2]->replace_lok(nullptr);
  at(zones[2]).occupy(false);
  EXPECT_EQ(zones[2]->get_lok(), nullptr) << "it has gone";
  train->destroy();

  for (const bool waits_first : {false, true}) {
    wait(*guard, 5);
    if (waits_first) guard->move_command(1, 0);
    train = comes();
    EXPECT_EQ(zones[2]->get_lok(), waits_first ? nullptr : train);
    turns_away(train);
    EXPECT_EQ(zones[2]->get_lok(), nullptr) << "while the run waits for something else";
    clock.advance(1min);
    EXPECT_EQ(zones[2]->get_lok(), nullptr) << "and afterwards";
    EXPECT_TRUE(zones[2]->get_reservations().empty());
    train->destroy();
    guard->remove_command(waits_first ? 0 : 1);
  }
}

TEST_F(RailwayLines, a_text_is_said_in_the_status_line) {
  auto* made = script_on("A");
  auto& line = command(*made, "say");
  line.set_text(1, "The express has passed");
  EXPECT_EQ(sentence(line), "Say “The express has passed”");
  line.set_text(1, "");
  fill("A");
  EXPECT_EQ(get_status(), "The express has passed");
}

TEST_F(RailwayLines, come_back_from_a_file_without_states_of_other_points) {
  const auto file = [](const char* state) {
    return std::string(
               "%YAML 1.2\ntitle: T\nobjects:\n"
               "  - !signal\n    name: S\n    id: 1\n    outputs: []\n    states:\n"
               "      - {name: red, id: 2, outputs: []}\n"
               "      - {name: green, id: 3, outputs: []}\n"
               "  - !signal\n    name: T\n    id: 4\n    outputs: []\n    states:\n"
               "      - {name: red, id: 5, outputs: []}\n"
               "      - {name: green, id: 6, outputs: []}\n"
               "  - !script\n    name: All\n    id: 7\n    conditions:\n"
               "      - [When, point-state, 1, ") +
           state +
           "]\n      - [And, lok-state, Any, lost]\n      - [And, track-power, false]\n"
           "    commands:\n      - [set-point, 4, 6]\n      - [wait-block, This, free, 30]\n"
           "      - [wait-point, 1, 3, 0]\n      - [run-script, 7]\n      - [say, \"A: b\"]\n"
           "      - [reserve, This, This]\n      - [release, ~]\n";
  };
  for (const auto* state : {"3", "6", "~"}) {
    ASSERT_TRUE(Layout::open_bytes("scripts.zblt", file(state))) << get_status();
    const auto& read = dynamic_cast<Script&>(*layout().get_scripts().child_at(0));
    EXPECT_EQ(sentence(*read.get_condition(0)),
              state == std::string("3") ? "S is green" : "S is (No State Selected)");
    EXPECT_TRUE(read.get_condition(0)->sleeps());
    EXPECT_EQ(sentence(*read.get_command(1)), "Wait until This Block is free (30 seconds at most)");
    EXPECT_EQ(sentence(*read.get_command(3)), "Run All");
    const auto saved = layout().serialize();
    ASSERT_TRUE(Layout::open_bytes("scripts.zblt", saved));
    EXPECT_EQ(layout().serialize(), saved);
  }
  for (const auto* bad :
       {"[wait-block, This, full, 0]", "[wait-block, This, free, 3601]", "[wait-block, This, free]",
        "[wait-point, 1, 3, -1]", "[say]", "[reserve, This]"}) {
    const auto text =
        "%YAML 1.2\ntitle: T\nobjects:\n  - !script\n    name: S\n    id: 1\n"
        "    commands:\n      - " +
        std::string(bad) + "\n";
    EXPECT_FALSE(Layout::open_bytes("bad.zblt", text)) << bad;
  }
}

}  // namespace
}  // namespace zemblar::test
