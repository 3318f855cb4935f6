// Scripts in layout files.

#include <gmock/gmock.h>

#include "scripts/script_text.h"
#include "tests/scripts/script_scene.h"

namespace zemblar::test {
namespace {

class ScriptFile : public ScriptScene {
 protected:
  /// A file with one locomotive, id 7, its function "horn", id 8, one block, id 9, and a script.
  std::string file_of(const std::string& conditions, const std::string& commands) {
    return "%YAML 1.2\n"
           "title: Test\n"
           "objects:\n"
           "  - !lok {name: x, id: 7, functions: [{name: horn, id: 8}]}\n"
           "  - !zone {name: A, id: 9}\n"
           "  - !script\n"
           "    name: Test\n"
           "    conditions: " +
           conditions +
           "\n"
           "    commands: " +
           commands + "\n";
  }
  bool open(const std::string& conditions, const std::string& commands) {
    return Layout::open(folder.write("test.zblt", file_of(conditions, commands)));
  }
  static Script& read_script() {
    return dynamic_cast<Script&>(*layout().get_scripts().child_at(0));
  }
  /// The sentences, one to a line.
  static std::string sentences() { return sentences(read_script()); }
  static std::string sentences(const Script& made) {
    std::string all = made.get_while() ? "While " : "When ";
    for (unsigned i = 0; i < made.get_num_conditions(); ++i) {
      const auto& line = *made.get_condition(i);
      if (i != 0) all += line.get_or_flag() ? "Or " : "And ";
      all += sentence(line) + "\n";
    }
    for (unsigned i = 0; i < made.get_num_commands(); ++i) {
      all += sentence(*made.get_command(i)) + "\n";
    }
    return all;
  }
  /// The entry of the script, as it is written.
  static std::string written() {
    const auto text = layout().serialize();
    return text.substr(text.find("!script"));
  }
};

// As they are written.
constexpr auto all_lines = R"(!script
    name: Test
    id: 3
    conditions:
      - [While, occupied, Any, true]
      - [And, occupied, This, false]
      - [Or, occupied, 2, true]
      - [And, lok-speed, This, eq, 50, "%"]
      - [Or, lok-speed, Any, nge, 120, km/h, travel]
      - [And, lok-speed, 0, ne, 0, "%"]
      - [And, lok-speed, ~, nlt, 1, "%"]
    commands:
      - [get-speed, This, Speed]
      - [get-speed, 0, true]
      - [set-speed, 0, 80, km/h]
      - [set-speed, ~, 40, "%"]
      - [set-direction, This, Reverse]
      - [set-direction, 0, Forwards]
      - [set-function, This, horn, false]
      - [set-function, 1, true]
      - [set-function, ~, true]
      - [wait, 0.1]
      - [wait, 360.1]
      - [wait, 10]
      - [wait-init-event]
      - [save]
      - [restore]
)";
constexpr auto all_sentences = R"(While Any Block is Occupied
And This Block is Unoccupied
Or A is Occupied
And This Locomotive Intended Speed is equal to 50%
Or Any Locomotive Travel Speed is not greater than or equal to 120 km/h
And x Intended Speed is not equal to 0%
And (No Locomotive Selected) Intended Speed is not less than 1%
Get This Locomotive Speed as Speed
Get x Speed as true
Set x Speed to 80 km/h
Set (No Locomotive Selected) Speed to 40%
Set This Locomotive Reverse
Set x Forwards
Set This Locomotive horn Off
Set x horn On
Set (No Locomotive Selected) (No Function Selected) On
Wait 0.1 seconds
Wait 360.1 seconds
Wait 10 seconds
Wait until initial event is finished
Save
Restore
)";

TEST_F(ScriptFile, every_kind_of_line_reads_back_to_the_same_bytes) {
  ASSERT_TRUE(open(
      R"([[While, occupied, Any, true], [And, occupied, This, false], [Or, occupied, 9, true],
          [And, lok-speed, This, eq, 50, "%"], [Or, lok-speed, Any, nge, 120, km/h, travel],
          [And, lok-speed, 7, ne, 0, "%", intended], [And, lok-speed, 123, nlt, 1, "%"]])",
      R"([[get-speed, This, Speed], [get-speed, 7, "true"], [set-speed, 7, 80, km/h],
          [set-speed, 9, 40, "%"], [set-direction, This, Reverse], [set-direction, 7, Forwards],
          [set-function, This, horn, false], [set-function, 8, true], [set-function, 123, true],
          [wait, 0.1], [wait, 360.1], [wait, 10], [wait-init-event], [save], [restore]])"))
      << get_status();
  EXPECT_EQ(sentences(), all_sentences);
  EXPECT_EQ(get_status(), "One script sleeps; “Start Scripts” in the Scripts panel wakes it.");
  // The numbers are those of the order in which objects are written or named.
  EXPECT_EQ(written(), all_lines);
  const auto text = layout().serialize();
  ASSERT_TRUE(Layout::open(folder.write("again.zblt", text)));
  EXPECT_EQ(sentences(), all_sentences);
  EXPECT_EQ(layout().serialize(), text);
}

TEST_F(ScriptFile, a_line_with_too_few_or_impossible_elements_keeps_the_file_shut) {
  auto* here = layout().get_loks().add(new Lok);
  const struct {
    const char* conditions;
    const char* commands;
    const char* problem;
  } files[] = {
      {"[[When, occupied]]", "[]", "line 8, column 18: key not found: 2"},
      {"[[When, occupied, Any]]", "[]", "key not found: 3"},
      {"[[When, occupied, Any, perhaps]]", "[]", "invalid scalar"},
      {"[[When, occupied, [9], true]]", "[]", "invalid scalar"},
      {"[[When, occupied, Some, true]]", "[]", "invalid scalar"},
      {"[[[When], occupied, Any, true]]", "[]", "invalid scalar"},
      {"[[When, {a: b}, Any, true]]", "[]", "invalid scalar"},
      {"[[When, lok-speed, This, eq, 50]]", "[]", "key not found: 5"},
      {"[[When, lok-speed, This, like, 50, '%']]", "[]", "line 8, column 42: invalid scalar"},
      {"[[When, lok-speed, This, eq, 50, mph]]", "[]", "invalid scalar"},
      {"[[When, lok-speed, This, eq, 50, '%', fast]]", "[]", "invalid scalar"},
      {"[]", "[[wait]]", "line 9, column 16: key not found: 1"},
      {"[]", "[[wait, long]]", "invalid scalar"},
      {"[]", "[[wait, -1]]", "invalid scalar"},
      {"[]", "[[wait, 1e30]]", "invalid scalar"},
      {"[]", "[[set-speed, This, 50]]", "key not found: 3"},
      {"[]", "[[set-speed, This, -50, '%']]", "invalid scalar"},
      {"[]", "[[set-speed, This, 50, knots]]", "invalid scalar"},
      {"[]", "[[set-direction]]", "key not found: 1"},
      {"[]", "[[set-direction, This, Sideways]]", "invalid scalar"},
      {"[]", "[[set-function, This, horn]]", "key not found: 3"},
      {"[]", "[[set-function, 8]]", "key not found: 2"},
      {"[]", "[[get-speed, This]]", "key not found: 2"},
      {"[]", "[[[save]]]", "invalid scalar"},
      {"often", "[]", "invalid scalar"},
      {"[]", "{wait: 10}", "invalid scalar"},
  };
  for (const auto& [conditions, commands, problem] : files) {
    EXPECT_FALSE(open(conditions, commands)) << conditions << commands;
    EXPECT_NE(get_status().raw().find(problem), std::string::npos) << get_status();
    ASSERT_EQ(layout().get_loks().child_at(0), here);
  }
}

TEST_F(ScriptFile, what_is_unknown_or_too_short_is_left_out) {
  const struct {
    const char* conditions;
    const char* commands;
    const char* sentences;
  } files[] = {
      {"[[When], occupied, [], [While, weather, sunny], [Or, occupied, This, true]]",
       "[[whistle, loudly], [], save, [save, for, later]]", "While This Block is Occupied\nSave\n"},
      {"[[Whenever, occupied, This, true], [Unless, occupied, Any, false], [While, occupied, Any, "
       "true]]",
       "[]",
       "When This Block is Occupied\nAnd Any Block is Unoccupied\nAnd Any Block is Occupied\n"},
      {"", "", "When "},
  };
  for (const auto& [conditions, commands, expected] : files) {
    ASSERT_TRUE(open(conditions, commands)) << get_status();
    EXPECT_EQ(sentences(), expected);
    EXPECT_TRUE(read_script().get_num_conditions() == 0 ||
                read_script().get_condition(0)->get_or_flag());
  }
  EXPECT_EQ(get_status(), "");
  EXPECT_EQ(written(), "!script\n    name: Test\n    id: 3\n") << "empty lists are left out";
}

TEST_F(ScriptFile, lines_pass_through_text_into_another_script_and_another_layout) {
  ASSERT_TRUE(open(
      R"([[While, occupied, Any, true], [And, lok-state, 7, held, {off: true}], [Or, occupied, 9, true]])",
      R"([[set-function, 8, true], [wait, 2, {off: true}], [set-function, This, horn, false],
          [wait-block, 9, free, 4], [reserve, 7, 9], [run-script, 3], [say, "# 9: [no]"]])"))
      << get_status();
  const auto saved = written();
  EXPECT_THAT(saved, testing::HasSubstr("- [wait, 2, {off: true}]\n"));
  auto& original = read_script();
  auto* horn = layout().get_loks().child_at(0)->child_at(0);
  auto& wants = command(original, "set-function", {"x"});
  horn->destroy();
  EXPECT_EQ(sentence(wants), "Set x (No Functions) On");
  const auto text = copy_script(original, nullptr);
  auto* copy = paste_script(text);
  ASSERT_TRUE(copy) << text;
  EXPECT_EQ(copy->get_name().raw(), "Test 2");
  EXPECT_EQ(sentences(*copy), sentences());
  EXPECT_EQ(get_status(), "“Test 2” sleeps; “Start Script” in its panel wakes it.");
  EXPECT_TRUE(copy->get_condition(1)->is_off() && copy->get_command(1)->is_off());
  const auto lines_in = [](const std::string& all) { return all.substr(all.find("conditions")); };
  EXPECT_EQ(lines_in(copy_script(*copy, nullptr)), lines_in(text));

  auto* other = script();
  ASSERT_TRUE(paste_lines(*other, copy_script(*copy, copy->get_condition(2)), nullptr));
  ASSERT_TRUE(paste_lines(*other, copy_script(*copy, nullptr), nullptr));
  EXPECT_EQ(sentences(*other), "When A is Occupied\n" + sentences().replace(0, 5, "Or"))
      << "it had a condition, and keeps its mode";
  EXPECT_TRUE(other->get_condition(1)->is_armed()) << "nothing of it slept";
  ASSERT_TRUE(paste_lines(*other, text + "\n", other->get_condition(0)));
  EXPECT_FALSE(other->get_condition(0)->is_armed()) << "from elsewhere";
  EXPECT_EQ(get_status(), "“Script 1” sleeps; “Start Script” in its panel wakes it.");
  ASSERT_TRUE(paste_lines(*copy, text, copy->get_condition(0)));
  EXPECT_FALSE(copy->get_condition(0)->is_armed());

  layout().new_document(true);
  zone("B");
  ASSERT_TRUE(paste_script(text));
  EXPECT_EQ(get_status(), "This layout does not have: A, x.");
  EXPECT_THAT(sentences(), testing::HasSubstr("Or This Block is Occupied\n"));

  const auto count = layout().get_scripts().child_count();
  std::string many = "[[save]";
  for (int i = 0; i < 1000; ++i) many += ", [save]";
  many += "]";
  const auto entry = [](const std::string& lines) { return "objects: [{name: X, " + lines + "}]"; };
  for (const auto& bad :
       {std::string(), std::string("Set x Speed to 40%"), std::string("objects: [1]"),
        std::string(100000, '['), std::string("objects: [{name: X}, {name: Y}]"),
        entry("commands: [[whistle]]"), entry("commands: [save, [wait, 1]]"),
        entry("conditions: [[When, occupied, Any, true], [And, occupied, 1, true]]"),
        entry("commands: [[wait, 1], [set-speed, [trains, x], 40, km/h]]"),
        entry("commands: [[reserve, [locomotives], This]]"), entry("commands: [[wait, never]]"),
        entry("commands: [[wait, 1, {off: perhaps}]]"), entry("commands: " + many)}) {
    set_status("");
    EXPECT_FALSE(paste_lines(read_script(), bad, nullptr)) << bad;
    EXPECT_FALSE(paste_script(bad)) << bad;
    EXPECT_EQ(get_status(), "The clipboard has no lines of a script that can be read.");
    layout().resolve();
  }
  EXPECT_EQ(layout().get_scripts().child_count(), count);
}

TEST_F(ScriptFile, switching_a_condition_off_ends_a_run_whatever_that_waits_for) {
  auto& detector = at(zone("A"));
  auto& other = at(zone("B"));
  auto* lok = new_lok("x");
  auto* made = script_on("A", true);
  condition(*made, "B", true, true);
  made->get_condition(1)->disarm();
  wait(*made, 5);
  set_speed(*made, "x", 50);
  detector.occupy();
  made->set_off(*made->get_condition(0), true);
  clock.advance(0ms);
  EXPECT_EQ(made->num_runs(), 0u);
  clock.advance(1min);
  EXPECT_EQ(lok->get_speed_overlay(), 0u);
  other.occupy();
  for (const bool full : {false, true}) detector.occupy(full);
  EXPECT_EQ(made->num_runs(), 0u) << "what is off sees nothing";
}

TEST_F(ScriptFile, a_command_that_is_switched_off_is_passed_over_and_ends_the_runs_at_it) {
  auto& detector = at(zone("A"));
  auto* made = script_on("A", true);
  wait(*made, 5);
  set_speed(*made, "", 40);
  act(*made, [](ScriptContext&) { set_status("done"); });
  made->set_off(*made->get_command(0), true);
  detector.occupy();
  EXPECT_EQ(get_status(), "done");
  EXPECT_EQ(made->num_runs(), 1u);
  paste_lines(*made, copy_script(*made, made->get_command(1)), made->get_command(1));
  EXPECT_EQ(made->num_runs(), 0u);
  set_status("");
  for (const bool full : {false, true}) detector.occupy(full);
  EXPECT_EQ(made->num_runs(), 1u);
  made->set_off(*made->get_command(2), true);
  EXPECT_EQ(made->num_runs(), 0u);
  EXPECT_EQ(get_status(),
            "“Script 1” was at work and has ended; it starts again when its condition returns.");
}

// Nothing that was read moves a train until somebody has chosen or pressed something.
TEST_F(ScriptFile, scripts_sleep_after_they_were_read) {
  ASSERT_TRUE(open("[[When, occupied, 9, true]]", "[[set-speed, This, 40, '%']]"));
  auto* block = dynamic_cast<Block*>(layout().get_blocks().child_at(0));
  auto* lok = dynamic_cast<Lok*>(layout().get_loks().child_at(0));
  block->set_lok(lok);
  EXPECT_EQ(lok->get_speed(), 0u);
  EXPECT_EQ(sleeping_scripts(), 1u);
  int told = 0;
  const ScopedConnection listening(signal_sleeping_changed().connect([&] { ++told; }));
  start_scripts();
  EXPECT_EQ(lok->get_speed(), 50u);
  EXPECT_EQ(sleeping_scripts(), 0u);
  EXPECT_GT(told, 0);

  ASSERT_TRUE(open("[[When, occupied, 9, true]]", "[]"));
  layout().get_blocks().child_at(0)->destroy();
  EXPECT_EQ(sentences(), "When This Block is Occupied\n") << "followed while it sleeps";

  ASSERT_TRUE(Layout::open(folder.write(
      "two.zblt", file_of("[[When, occupied, Any, true]]", "[]") +
                      "  - !script {name: Second, conditions: [[When, occupied, 9, true]]}\n"
                      "  - !script {name: Third, conditions: [[When, occupied, This, true]]}\n")));
  EXPECT_EQ(get_status(), "2 scripts sleep; “Start Scripts” in the Scripts panel wakes them.");
  const ScopedConnection trouble(
      signal_sleeping_changed().connect([] { set_status("A picture is missing."); }));
  ASSERT_TRUE(open("[[When, occupied, Any, true]]", "[]"));
  EXPECT_EQ(get_status(), "A picture is missing.") << "that was to be told first";
}

}  // namespace
}  // namespace zemblar::test
