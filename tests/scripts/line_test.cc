// Conditions and commands as a person reads and edits them.

#include "scripts/func_holder.h"
#include "scripts/script_command_wait.h"
#include "scripts/script_variable.h"
#include "tests/scripts/script_scene.h"

namespace zemblar::test {
namespace {

class Lines : public ScriptScene {
 protected:
  Lines() : lok(new_lok("x")), made(script()) {}

  static std::string menu(ScriptLine& line, unsigned arg) {
    std::string all;
    for (const auto& choice : line.choices(arg)) {
      all += (all.empty() ? "" : "; ") + (choice.separator ? "-" : choice.text.raw());
      EXPECT_EQ(choice.separator, !choice.choose);
    }
    return all;
  }
  ScriptCommand& add(const char* key) { return command(*made, key); }
  ScriptEvent& add_event(const char* key) {
    return *made->get_condition(made->add_condition(create_script_event(key)));
  }

  Lok* lok;
  Script* made;
};

TEST_F(Lines, menus_offer_what_the_layout_has) {
  auto& direction = add("set-direction");
  auto& function_line = add("set-function");
  auto& occupied = add_event("occupied");
  auto& speed = add_event("lok-speed");
  EXPECT_EQ(menu(occupied, 1), "Any Block; This Block");
  zone("A");
  zone("B");
  new_lok("y");
  function(lok, "horn");
  function(lok, "bell");
  EXPECT_EQ(menu(direction, 1), "x; y; -; This Locomotive");
  EXPECT_EQ(menu(occupied, 1), "Any Block; This Block; -; A; B");
  EXPECT_EQ(menu(function_line, 2), "bell; horn") << "all names that functions have";
  pick(function_line, 1, "x");
  EXPECT_EQ(menu(function_line, 2), "horn; bell");
  pick(function_line, 1, "y");
  EXPECT_EQ(sentence(function_line), "Set y (No Functions) On");
  EXPECT_EQ(menu(function_line, 2), "");
  EXPECT_EQ(menu(speed, 1), "x; y; -; Any Locomotive; This Locomotive");
  EXPECT_EQ(menu(speed, 4),
            "equal to; greater than; greater than or equal to; less than; less than or equal to");
  layout().get_loks().destroy_children();
  EXPECT_EQ(menu(direction, 1), "This Locomotive");
  EXPECT_EQ(direction.get_menu(1), nullptr) << "without an interface";

  EXPECT_EQ(menu(direction, 2), "Forwards; Reverse");

  // A menu may stay open longer than what it is about.
  const auto late = occupied.choices(1);
  layout().get_blocks().find_child("A")->destroy();
  late[3].choose();
  EXPECT_EQ(sentence(occupied), "Any Block is Occupied");
  late[4].choose();
  EXPECT_EQ(sentence(occupied), "B is Occupied");
  made->remove_condition(0);
  late[0].choose();
}

TEST_F(Lines, a_locomotive_that_ends_leaves_nobody_selected) {
  auto& speed = add("set-speed");
  auto& blow = add("set-function");
  auto& compare = add_event("lok-speed");
  auto* horn = function(lok, "horn");
  for (auto* line : std::vector<ScriptLine*>{&speed, &blow, &compare}) pick(*line, 1, "x");
  pick(blow, 2, "horn");
  std::string changed;
  const ScopedConnection listening(
      blow.signal_line_changed().connect([&](unsigned arg) { changed += std::to_string(arg); }));
  horn->destroy();
  EXPECT_EQ(sentence(blow), "Set x (No Functions) On");
  EXPECT_EQ(changed, "12");
  function(lok, "bell");
  EXPECT_EQ(sentence(blow), "Set x (No Function Selected) On");
  lok->destroy();
  EXPECT_EQ(sentence(speed), "Set (No Locomotive Selected) Speed to 100%");
  EXPECT_EQ(sentence(blow), "Set (No Locomotive Selected) (No Function Selected) On");
  EXPECT_EQ(sentence(compare), "(No Locomotive Selected) Intended Speed is equal to 50%");
  pick(blow, 1, "This Locomotive");
  EXPECT_EQ(sentence(blow), "Set This Locomotive horn On") << "the name stays with the line";
  auto* other = new_lok("y");
  function(other, "horn");
  pick(blow, 1, "y");
  EXPECT_EQ(sentence(blow), "Set y horn On");
}

TEST_F(Lines, a_choice_is_told_before_it_is_made_and_after_and_not_when_it_is_the_present_one) {
  zone("A");
  zone("B");
  new_lok("y");
  function(lok, "horn");
  for (const auto& [key, kind] : script_events()) made->add_condition(kind.create());
  for (const auto& [key, kind] : script_cmds()) made->add_command(kind.create(*made));
  const auto try_all = [](ScriptLine& line) {
    int changing = 0;
    int changed = 0;
    const ScopedConnection before = line.signal_changing().connect([&] { ++changing; });
    const ScopedConnection after = line.signal_line_changed().connect([&](unsigned) { ++changed; });
    for (unsigned arg = 1; arg <= 5; ++arg) {
      if (line.get_arg_type(arg) != ScriptLine::ArgType::menu) continue;
      for (const auto& choice : line.choices(arg)) {
        if (choice.separator || choice.text == line.get_arg_text(arg)) continue;
        changing = changed = 0;
        choice.choose();
        EXPECT_EQ(changing, 1) << sentence(line);
        EXPECT_GE(changed, 1) << sentence(line);
        changing = 0;
        EXPECT_TRUE(pick(line, arg, line.get_arg_text(arg).raw())) << sentence(line);
        EXPECT_EQ(changing, 0) << sentence(line);
      }
    }
  };
  for (unsigned i = 0; i < made->get_num_conditions(); ++i) try_all(*made->get_condition(i));
  for (unsigned i = 0; i < made->get_num_commands(); ++i) try_all(*made->get_command(i));
}

TEST_F(Lines, a_wait_is_of_tenths_of_a_second_and_an_hour_at_most) {
  auto& line = dynamic_cast<ScriptCommandWait&>(add("wait"));
  int changed = 0;
  line.signal_line_changed().connect([&](unsigned) { ++changed; });
  const struct {
    double seconds;
    unsigned delay;
    const char* text;
  } values[] = {{0.05, 1, "0.1"},      {0.1, 1, "0.1"},       {0.26, 3, "0.3"},
                {-7, 1, "0.1"},        {3, 30, "3"},          {3599.94, 35999, "3599.9"},
                {3600, 36000, "3600"}, {4000, 36000, "3600"}, {4000, 36000, "3600"}};
  for (const auto& [seconds, delay, text] : values) {
    line.set_spin_value(1, seconds);
    EXPECT_EQ(line.get_delay(), delay) << seconds;
    EXPECT_EQ(line.get_arg_text(1), text);
  }
  EXPECT_EQ(changed, 9) << "also where nothing has";
  SpinRange range;
  line.get_spin_range(1, range);
  EXPECT_EQ(range.min, 0.1);
  EXPECT_EQ(range.max, 3600.0);
  EXPECT_EQ(range.value, 3600.0);
  EXPECT_EQ(range.step, 0.1);
  EXPECT_EQ(range.digits, 1u);
}

TEST_F(Lines, names_of_variables_are_claimed_and_given_back) {
  auto& first = add("get-speed");
  auto& second = add("get-speed");
  auto& third = add("get-speed");
  EXPECT_EQ(second.get_arg_text(2), "Speed 1");
  EXPECT_EQ(third.get_arg_text(2), "Speed 2");
  EXPECT_EQ(first.get_variable_type(2), 3);
  EXPECT_TRUE(made->add_variable("Load", 2));
  first.set_text(2, "Load");
  EXPECT_EQ(first.get_arg_text(2), "Speed") << "a name for something else";
  first.set_text(2, "Speed 1");  // shared
  made->remove_command(1);
  using Names = std::vector<Glib::ustring>;
  EXPECT_EQ(made->get_variables(0), (Names{"Load", "Speed 1", "Speed 2"}));
  EXPECT_EQ(made->get_variables(3), (Names{"Speed 1", "Speed 2"}));
  made->remove_command(0);
  made->remove_variable("Nobody's");
  EXPECT_EQ(made->get_variables(3), (Names{"Speed 2"}));
  EXPECT_EQ(add("get-speed").get_arg_text(2), "Speed");
  EXPECT_FALSE(made->add_variable("None", 0));
}

// The editor's state is freed in any case, and its value is taken unless it was cancelled.
TEST_F(Lines, an_editor_of_a_speed_is_ended_once_whatever_comes_of_it) {
  static int open = 0;
  struct Halving : SpeedEditor {
    explicit Halving(const SpeedArg& speed) : shown(speed) { ++open; }
    ~Halving() override { --open; }
    SpeedArg value() const override { return {shown.speed / 2, true}; }
    SpeedArg shown;
  };
  auto& ui = ScriptUi::get();
  ui.make_speed_editor = [](Gtk::HBox&, const SpeedArg& speed) {
    return std::make_unique<Halving>(speed);
  };
  char place = 0;
  auto& box = reinterpret_cast<Gtk::HBox&>(place);  // nobody looks at it
  const std::pair<ScriptLine*, unsigned> lines[] = {{&add("set-speed"), 2},
                                                    {&add_event("lok-speed"), 5}};
  for (const auto& [line, arg] : lines) {
    const auto former = line->get_arg_text(arg);
    line->finish_editor(arg, true, line->create_editor(arg, box));
    EXPECT_EQ(line->get_arg_text(arg), former);
    line->finish_editor(arg, false, line->create_editor(arg, box));
    EXPECT_EQ(line->get_arg_text(arg), arg == 2 ? "50 km/h" : "25 km/h");
    EXPECT_EQ(open, 0);
  }
  ui = {};
}

TEST(ScriptValue, is_read_as_what_it_is_and_compares_a_speed_in_either_unit) {
  using Kind = ScriptVariable::Kind;
  const ScriptVariable word(Kind::word2, 7);
  EXPECT_EQ(word.word(Kind::word2), 7u);
  EXPECT_THROW(static_cast<void>(word.word(Kind::word1)), ScriptVariable::TypeMismatch);
  EXPECT_THROW(static_cast<void>(word.byte()), ScriptVariable::TypeMismatch);
  EXPECT_FALSE(word == ScriptVariable(Kind::word1, 7));
  const auto speed = [](unsigned a, unsigned b) {
    return ScriptVariable(ScriptVariable::Words{a, b});
  };
  EXPECT_TRUE(speed(1, 2) == speed(1, 3));
  EXPECT_TRUE(speed(1, 2) == speed(4, 2));
  EXPECT_FALSE(speed(1, 2) == speed(2, 1));
}

TEST_F(Lines, a_function_that_ends_leaves_the_name_that_it_had) {
  Lok* lok = layout().get_loks().add(new Lok);
  auto* bell = lok->add(new Function(lok));
  FuncHolder held;
  held.set_function(bell);
  bell->set_name("Whistle");
  bell->destroy();
  EXPECT_EQ(held.get_function(), nullptr);
  EXPECT_EQ(held.get_name(), "Whistle");
  EXPECT_EQ(held.get_lok(), lok);
}

}  // namespace
}  // namespace zemblar::test
