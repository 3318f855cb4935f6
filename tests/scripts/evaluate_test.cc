// Which runs begin, and which instances are announced as finished, as blocks fill and empty.

#include <yaml-cpp/yaml.h>

#include "core/private_form.h"
#include "scripts/condition_answers.h"
#include "tests/scripts/script_scene.h"

namespace zemblar::test {
namespace {

struct Condition {
  const char* word;  // of alternatives: "And" or "Or"
  const char* block;
  bool occupied = true;
  bool off = false;
};

struct Step {
  // "A" fills block A, "-A" empties it, "A+x" and "A-x" place and remove lok x, "!0" switches the
  // first condition off or on
  const char* event;
  const char* log;
};

struct Case {
  const char* name;
  std::vector<Condition> conditions;
  std::vector<Step> steps;
};

class Evaluation : public ScriptScene {
 protected:
  Evaluation() {
    for (const auto* name : {"A", "B", "C", "D"}) zone(name);
    new_lok("x");
  }

  Script* watched(const std::vector<Condition>& conditions) {
    auto* made = script();
    for (const auto& line : conditions) {
      condition(*made, line.block, line.occupied, std::string(line.word) == "Or");
      made->set_off(*made->get_condition(made->get_num_conditions() - 1), line.off);
    }
    follow(*made);
    return made;
  }
  void follow(Script& made) {
    act(made, [this](ScriptContext& run) { note("start ", run.instance); });
    made.signal_instance_finished().connect(
        [this](const EventInstance& instance) { note("end ", instance); });
  }

  /// In the place of the script, and as read from a file: it sleeps.
  static Script* copy_of(Script& original) {
    ObjectNumbers numbers;
    const PrivateForm form(numbers);
    YAML::Emitter out;
    out << original;
    numbers.forget(&original);
    original.destroy();
    auto* copy = layout().get_scripts().add(new Script(YAML::Load(out.c_str())));
    layout().resolve();
    return copy;
  }

  void happen(const std::string& event) {
    if (event[0] == '!') {
      auto& made = dynamic_cast<Script&>(*layout().get_scripts().child_at(0));
      auto& line = *made.get_condition(static_cast<unsigned>(event[1] - '0'));
      return made.set_off(line, !line.is_off());
    }
    const bool empties = event[0] == '-';
    auto* block =
        dynamic_cast<Block*>(layout().get_blocks().find_child(std::string(1, event[empties])));
    auto* lok = dynamic_cast<Lok*>(layout().get_loks().find_child("x"));
    if (event.size() < 3) return at(block).occupy(!empties);
    event[1] == '+' ? block->set_lok(lok) : block->clear_lok(lok);
  }

  /// What is answered to a person is what has started, unless an edit waits for its trigger.
  static void answers_agree(const Script& tested, bool is_edited) {
    for (const auto& answer : ask_conditions(tested)) {
      EXPECT_EQ(answer.instances.empty(), answer.kind != ConditionAnswer::Kind::holds &&
                                              answer.kind != ConditionAnswer::Kind::holds_alone);
      for (const auto& instance : answer.instances) {
        EXPECT_TRUE(is_edited || !answer.completes || tested.has_started_for(instance));
      }
    }
  }

  /// Since the last call. What begins or ends together has no order that a person could name.
  std::string log() {
    auto from = told_.begin();
    while (from != told_.end()) {
      const auto to = std::find_if(from, told_.end(),
                                   [&](const auto& text) { return text[0] != from->front(); });
      std::sort(from, to);
      from = to;
    }
    std::string all;
    for (const auto& text : told_) all += (all.empty() ? "" : ", ") + text;
    told_.clear();
    return all;
  }

 private:
  void note(const std::string& what, const EventInstance& instance) {
    told_.push_back(what + instance.block->get_name().raw() +
                    (instance.lok ? "/" + instance.lok->get_name().raw() : ""));
  }

  std::vector<std::string> told_;
};

const std::vector<Case> cases = {
    {"one block",
     {{"When", "A"}},
     {{"A", "start A"}, {"A", ""}, {"B", ""}, {"-A", "end A"}, {"-A", ""}, {"A", "start A"}}},
    {"any block, one run for each",
     {{"When", "Any Block"}},
     {{"A", "start A"}, {"B", "start B"}, {"C", "start C"}, {"-B", "end B"}, {"B", "start B"}}},
    {"a locomotive makes another instance",
     {{"When", "Any Block"}},
     {{"A", "start A"},
      {"A+x", "end A, start A/x"},
      {"A-x", "end A/x, start A"},
      {"-A", "end A"},
      {"A+x", "start A/x"},
      {"A-x", "end A/x"}}},
    {"and: both, and the later one is the instance",
     {{"When", "A"}, {"And", "B"}},
     {{"A", ""}, {"B", "start B"}, {"-A", "end B"}, {"A", "start B"}, {"-B", "end B"}}},
    {"or: an instance of both alternatives counts once",
     {{"When", "A"}, {"Or", "Any Block"}},
     {{"A", "start A"}, {"B", "start B"}, {"-A", "end A"}}},
    {"off: as if the line were not there",
     {{"When", "A"}, {"And", "B", true, true}, {"Or", "C", true, true}, {"And", "D"}},
     {{"A", "start A"}, {"D", "start D"}, {"!2", "end D"}, {"C", "start D"}, {"!1", "end A"}}},
    {"off: ends at once, and begins with the next trigger",
     {{"When", "A"}},
     {{"A", "start A"}, {"!0", "end A"}, {"!0", ""}, {"-A", ""}, {"A", "start A"}}},
    {"off: fewer conditions start nothing by themselves",
     {{"When", "A"}, {"And", "B"}},
     {{"A", ""}, {"!1", ""}, {"B", ""}, {"-A", ""}, {"A", "start A"}, {"-B", ""}, {"!1", "end A"}}},
};

TEST_F(Evaluation, starts_on_the_rising_edge_of_each_instance_after_what_is_finished) {
  for (const auto& one : cases) {
    auto* tested = watched(one.conditions);
    bool is_edited = false;
    log();  // what held from the beginning
    for (const auto& [event, expected] : one.steps) {
      happen(event);
      EXPECT_EQ(log(), expected) << one.name << ", at " << event;
      is_edited = is_edited || event[0] == '!';
      answers_agree(*tested, is_edited);
    }
    tested->destroy();
    for (const auto* event : {"A-x", "-A", "-B", "-C", "-D"}) happen(event);
    EXPECT_EQ(log(), "") << one.name;
  }
}

TEST_F(Evaluation, finishes_before_it_starts_and_arms_by_a_choice) {
  auto* any = watched({});
  happen("A");
  happen("B+x");
  auto* line = create_script_event("occupied");
  any->add_condition(line);
  EXPECT_FALSE(line->is_armed());
  EXPECT_TRUE(any->sleeps());
  EXPECT_NE(line->asleep_because(), "");
  happen("C");
  EXPECT_EQ(log(), "") << "nobody has chosen the block";
  pick(*line, 1, "Any Block");
  EXPECT_TRUE(line->is_armed());
  EXPECT_EQ(line->asleep_because(), "");
  EXPECT_EQ(log(), "start A, start B/x, start C");
  happen("D");
  EXPECT_EQ(log(), "start D");
  pick(*line, 2, "Unoccupied");
  EXPECT_EQ(log(), "end A, end B/x, end C, end D");
  pick(*line, 2, "Unoccupied");
  happen("-C");
  EXPECT_EQ(log(), "start C");

  // Edits of conditions wait for the next trigger.
  condition(*any, "A", true, true);
  EXPECT_EQ(log(), "start A");
  any->remove_condition(0);
  any->remove_condition(7);
  EXPECT_EQ(log(), "");
  happen("C");
  EXPECT_EQ(log(), "") << "nobody watches that block any more";
  happen("A");
  EXPECT_EQ(log(), "end C");
}

TEST_F(Evaluation, a_condition_that_sleeps_is_asked_when_another_one_wakes) {
  auto* made = watched({{"When", "A"}});
  made->add_condition(create_script_event("occupied"));
  made->get_condition(1)->set_or_flag(true);
  happen("B");
  EXPECT_EQ(log(), "");
  happen("A");
  EXPECT_EQ(log(), "start A, start B");
  EXPECT_EQ(sleeping_scripts(), 1u);
  start_scripts();
  EXPECT_EQ(sleeping_scripts(), 0u);
  happen("C");
  EXPECT_EQ(log(), "start C");
}

TEST_F(Evaluation, lines_that_can_never_hold_say_so_and_do_not_sleep) {
  auto* made = watched({{"When", "This Block"}});
  auto* first = made->get_condition(0);
  EXPECT_NE(first->asleep_because(), "");
  condition(*made, "Any Block");
  made->move_condition(0, 1);
  EXPECT_EQ(first->asleep_because(), "") << "the line before it finds a block now";
  first->set_or_flag(true);
  EXPECT_NE(first->asleep_because(), "");
  auto* speed = create_script_event("lok-speed");
  made->add_condition(speed);
  EXPECT_NE(speed->asleep_because(), "");
  made->start();
  EXPECT_FALSE(made->sleeps());
  log();
  made->move_condition(2, 0);
  speed->set_or_flag(true);
  made->remove_condition(2);
  happen("A");
  EXPECT_EQ(log(), "") << "all lines of an alternative have to hold";
}

TEST_F(Evaluation, a_block_that_ends_leaves_this_block_and_finishes_what_it_was) {
  auto* made = watched({{"When", "A"}, {"Or", "B"}});
  happen("A");
  EXPECT_EQ(log(), "start A");
  layout().get_blocks().find_child("A")->destroy();
  EXPECT_EQ(log(), "end A");
  EXPECT_EQ(sentence(*made->get_condition(0)), "This Block is Occupied");
  happen("B");
  EXPECT_EQ(log(), "start B");

  // A train that leaves it makes it free, but nothing begins in it any more.
  condition(*made, "Any Block", false, true);
  auto* siding = zone("S", false);
  auto* train = new_lok("y");
  train->detected(&siding->left, &siding->right, true);
  ASSERT_EQ(siding->get_lok(), train);
  log();
  siding->destroy();
  EXPECT_EQ(log(), "");
  EXPECT_TRUE(train->get_blocks().empty());
}

// Its end frees what stands in it, and so has others asked while its line still names it.
TEST_F(Evaluation, runs_for_other_blocks_go_on_when_a_block_ends_whose_line_becomes_this_block) {
  auto* other = zone("F", false);
  for (const bool asleep : {false, true}) {
    SCOPED_TRACE(asleep);
    auto* ending = zone("E", false);
    auto* made = script();
    for (const auto* block : {"Any Block", "E", "Any Block"}) condition(*made, block);
    if (asleep) {
      made = copy_of(*made);
      made->get_condition(0)->arm();
    }
    follow(*made);
    auto* train = new_lok("y");
    ending->set_lok(train);
    other->set_lok(new_lok("z"));
    EXPECT_EQ(log(), "start E/y, start F/z");
    ending->destroy();
    EXPECT_EQ(log(), "end E/y");
    EXPECT_EQ(sentence(*made->get_condition(1)), "This Block is Occupied");
    other->get_lok()->destroy();
    EXPECT_EQ(log(), "end F/z");
    made->destroy();
    train->destroy();
  }
}

// Another object may come to lie where one has been.
TEST_F(Evaluation, an_instance_ends_with_its_objects_also_while_nobody_watches) {
  auto* made = script_on("Any Block");
  unsigned started = 0;
  act(*made, [&](ScriptContext&) { ++started; });
  std::vector<EventInstance> finished;
  made->signal_instance_finished().connect(
      [&](const EventInstance& instance) { finished.push_back(instance); });
  auto* block = zone("E");
  block->set_lok(new_lok("y"));
  const EventInstance former{block, block->get_lok()};
  ASSERT_EQ(started, 1u);
  made->add_condition(create_script_event("occupied"));
  made->remove_condition(0);  // the other one sleeps
  block->get_lok()->destroy();
  for (int i = 0; i < 20 && !block->get_lok(); ++i) {
    auto* other = new_lok();
    if (other == former.lok) block->set_lok(other);
  }
  const bool same_place = block->get_lok() != nullptr;
  made->start();
  ASSERT_EQ(finished.size(), 1u);
  EXPECT_EQ(finished[0], former);
  EXPECT_EQ(started, same_place ? 2u : 1u);
}

}  // namespace
}  // namespace zemblar::test
