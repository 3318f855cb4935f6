// Scripts, written as a person does it: by keys and by clicks on the words.

#include "ui/scripts/script_editor.h"

#include <glibmm/convert.h>
#include <gmock/gmock.h>
#include <gtkmm/radiobutton.h>
#include <gtkmm/spinbutton.h>
#include <gtkmm/togglebutton.h>

#include "scripts/script_command_set_speed.h"
#include "tests/ui/script_window.h"
#include "ui/panels/script_properties.h"
#include "ui/toolkit/edit_history.h"
#include "ui/toolkit/object_finder.h"
#include "ui/windows/layout_dialogs.h"

namespace zemblar::test {
namespace {

using testing::ElementsAre;
using Editor = ScriptEditorTest;
using Window = ScriptWindow;

TEST(Sentence, puts_arguments_in_their_places_and_takes_them_as_they_are) {
  struct Case {
    const char* format;
    const char* text;
    Texts arguments;  // as the places cut them out
  };
  const Case cases[] = {
      {"Set %1 Speed to %2", "Set Große %2 Speed to 40%", {"Große %2", "40%"}},
      {"%2 für %1%%", "40% für Große %2%", {"40%", "Große %2"}},
      {"%12%1", "twelveGroße %2", {"twelve", "Große %2"}},
      {"100% of %", "100% of %", {}},
      {"", "", {}},
  };
  const auto text_of = [](unsigned arg) {
    return arg == 1 ? "Große %2" : arg == 2 ? "40%" : "twelve";
  };
  for (const auto& each : cases) {
    const Sentence sentence(each.format, text_of);
    EXPECT_EQ(sentence.text().raw(), each.text);
    Texts arguments;
    for (const auto& [number, begin, end] : sentence.arguments()) {
      EXPECT_EQ(sentence.text().raw().substr(begin, end - begin), text_of(number));
      arguments.push_back(text_of(number));
    }
    EXPECT_EQ(arguments, each.arguments);
  }
}

TEST_F(Editor, writes_a_script_by_keys_alone) {
  Window window(script);
  EXPECT_THAT(window.rows(), ElementsAre("Add Condition…", "Add Command…"));
  window.press({GDK_Return});
  EXPECT_THAT(offered(), ElementsAre("Locomotive Speed Is…", "Block is (un)occupied",
                                     "Locomotive Is Held, Stands, Drives…", "Point or Signal Is…",
                                     "Track Power Is…"));
  choose("Block is (un)occupied");
  EXPECT_THAT(offered(), ElementsAre("Any Block", "This Block", "", "Station"));
  choose("Station");
  window.press({GDK_Right, GDK_space});
  choose("Unoccupied");
  window.press({GDK_Left, GDK_Left, GDK_Return});
  choose("While");
  window.press({GDK_Down, GDK_Down, GDK_Return});
  choose("Set Locomotive Speed");
  EXPECT_FALSE(open_menu());
  window.press({GDK_Return});
  choose("Express %1");
  window.press({GDK_Right, GDK_Right, GDK_Return});
  window.type("40");
  window.press({GDK_Return});
  EXPECT_THAT(window.rows(), ElementsAre("While Station is Unoccupied", "Add Condition…",
                                         "Set Express %1 Speed to 40%", "Add Command…"));
  EXPECT_TRUE(script.get_condition(0)->is_armed());
  lok.set_name("Local");
  EXPECT_EQ(window.rows()[2], "Set Local Speed to 40%");
}

TEST_F(Editor, keeps_the_entry_in_sight_that_adds_the_next_line) {
  for (int i = 0; i < 30; ++i) add_wait(1);
  Window window(script);
  window.press({GDK_End, GDK_Return});
  for (int added = 0; added < 4; ++added) {
    choose("Wait");
    const auto last = window.rows().size() - 1;
    EXPECT_EQ(window.rows().at(last), "Add Command…");
    Gdk::Rectangle row;
    Gdk::Rectangle visible;
    window.list().get_background_area(Gtk::TreePath(std::to_string(last)),
                                      *window.list().get_column(0), row);
    window.list().get_visible_rect(visible);
    EXPECT_LE(row.get_y() + row.get_height(), visible.get_height());
    window.press({GDK_Down, GDK_Return});
  }
}

TEST_F(Editor, takes_a_click_on_a_word_for_that_word) {
  add_occupied();
  add_occupied().set_or_flag(true);
  script.add_condition(create_script_event("lok-speed"));
  add_wait(2.5);
  add_command("set-function");
  Window window(script);
  const std::tuple<unsigned, unsigned, const char*> places[] = {
      {0, 0, "While"},      {0, 1, "Any Block"}, {0, 2, "Occupied"},
      {1, 0, "Or"},         {1, 2, "Occupied"},  {2, 0, "And"},
      {2, 1, "Express %1"}, {2, 4, "less than"}, {3, 0, "Block is (un)occupied"},
      {5, 1, "Express %1"}, {5, 3, "Off"},       {6, 0, "Wait"}};
  for (const auto& [row, arg, text] : places) {
    window.click(row, arg);
    for (int i = 0; i < 2; ++i) {
      EXPECT_THAT(offered(), testing::Contains(text)) << row << ", " << arg;
      if (open_menu()) open_menu()->popdown();
      handle_events();
      if (i == 0) window.press({GDK_Return});
    }
    window.click(row, arg, arg == 4 ? 400 : 1);
    EXPECT_FALSE(open_menu()) << "beside " << row << ", " << arg;
  }
  window.click(0, 1, 0, 2);
  EXPECT_FALSE(open_menu());
  // The keys stop at the last word.
  window.select(0);
  for (int i = 0; i < 5; ++i) window.press({GDK_Right});
  window.press({GDK_Left, GDK_Return});
  EXPECT_THAT(offered(), testing::Contains("Any Block"));
  auto* place = layout().get_blocks().add(new Zone);
  open_menu()->popdown();
  handle_events();
  window.press({GDK_Return});
  place->destroy();
  EXPECT_FALSE(open_menu()->items().back().get_sensitive()) << "it has ended meanwhile";
  open_menu()->popdown();
  handle_events();
  window.click(4, 1);
  EXPECT_TRUE(window.editor<Gtk::SpinButton>());
  window.click(2, 5);
  ASSERT_TRUE(window.editor<Gtk::RadioButton>()) << "at the first click";
  const auto last = get_widget<Gtk::RadioButton>(*window, "km/h").get_allocation();
  Gdk::Rectangle seen;
  window.list().get_visible_rect(seen);
  EXPECT_LE(last.get_x() + last.get_width(), seen.get_width()) << "however long the sentence is";
}

TEST_F(Editor, edits_numbers_and_names_in_place_and_keeps_what_is_cancelled_or_refused) {
  add_wait(2.5);
  add_command("get-speed");
  add_command("set-speed");
  ASSERT_TRUE(script.add_variable("Taken", 1));
  Window window(script);
  const std::tuple<unsigned, unsigned, const char*, const char*> edits[] = {
      {1, 1, "7.5", "Wait 7.5 seconds"},
      {2, 2, "Tempo", "Get This Locomotive Speed as Tempo"},
      {2, 2, "Taken", "Get This Locomotive Speed as Tempo"},
      {3, 2, "40", "Set This Locomotive Speed to 40%"}};
  for (const auto& [row, arg, typed, result] : edits) {
    const auto before = window.rows()[row];
    for (const auto end : {GDK_Escape, GDK_Return}) {
      window.click(row, arg);
      const auto place = window.place_of(row, arg);
      EXPECT_EQ(window.editor<Gtk::Entry>()->get_allocation().get_x(), place.get_x());
      EXPECT_GT(place.get_width(), window.editor<Gtk::Entry>()->get_allocation().get_width() - 1);
      window.type(typed);
      if (end == GDK_Escape) window.press({GDK_Up});
      window.press({static_cast<guint>(end)});
      EXPECT_EQ(window.rows()[row], end == GDK_Escape ? before : result);
      EXPECT_FALSE(window.editor<Gtk::Entry>());
      EXPECT_TRUE(window.list().has_focus() || (*window).get_focus() == &window.list());
    }
  }
}

TEST_F(Editor, clamps_a_speed_to_what_its_unit_allows) {
  auto* line = new ScriptCommandSetSpeed(script);
  line->set_speed({.speed = 250, .km_h = true});
  script.add_command(line);
  Window window(script);
  const auto edit = [&](const char* unit, const char* typed) {
    window.click(1, 2);
    if (unit) get_widget<Gtk::RadioButton>(window.list(), unit).set_active();
    if (typed) get_widget<Gtk::SpinButton>(window.list()).set_text(typed);
    window.press({GDK_Return});
    return line->get_speed();
  };
  EXPECT_EQ(edit(nullptr, nullptr), (SpeedArg{.speed = 250, .km_h = true}));
  EXPECT_EQ(edit("%", nullptr), (SpeedArg{.speed = 100, .km_h = false}));
  EXPECT_EQ(edit(nullptr, "101"), (SpeedArg{.speed = 100, .km_h = false}));
  EXPECT_EQ(edit("km/h", "20000"), (SpeedArg{.speed = 10000, .km_h = true}));
  line->set_speed({.speed = 40, .km_h = false});
  // The number first and then, with the pointer or by Tab, the unit.
  for (const char* unit : {"km/h", "%"}) {
    window.click(1, 2);
    get_widget<Gtk::SpinButton>(window.list()).set_text("160");
    auto& button = get_widget<Gtk::RadioButton>(window.list(), unit);
    button.grab_focus();
    handle_events();
    button.clicked();
    window.press({GDK_Return});
    const bool km_h = std::string(unit) == "km/h";
    EXPECT_EQ(line->get_speed(), (SpeedArg{.speed = km_h ? 160u : 100u, .km_h = km_h}));
  }
}

TEST_F(Editor, an_editor_without_room_pushes_the_sentence_aside_and_covers_no_word) {
  auto* lok = layout().get_loks().add(new Lok);
  lok->set_name(std::string(60, 'W'));
  auto* line = new ScriptCommandSetSpeed(script);
  line->set_lok(lok);
  script.add_command(line);
  Window window(script);
  window.select(1);
  window.press({GDK_Right, GDK_Return});
  auto& editor = get_widget<Gtk::SpinButton>(window.list());
  int x = 0;
  int y = 0;
  editor.translate_coordinates(window.list(), 0, 0, x, y);
  EXPECT_NEAR(window.place_of(1, 2).get_x(), x, 12) << "right behind the word before it";
  EXPECT_LT(window.place_of(1, 1).get_x(), 0) << "the beginning is out of sight";
}

TEST_F(Editor, keys_for_an_editor_are_not_taken_for_the_rows) {
  add_command("set-speed");
  add_wait(2.5);
  Window window(script);
  window.click(1, 2);
  window.press({GDK_Delete, GDK_Tab, GDK_Right});
  EXPECT_TRUE(get_widget<Gtk::RadioButton>(window.list(), "km/h").get_active());
  window.press({GDK_Up, GDK_Delete, GDK_Down});
  window.press({GDK_Down}, GDK_MOD1_MASK);
  EXPECT_TRUE(window.editor<Gtk::SpinButton>());
  window.press({GDK_Escape});
  EXPECT_THAT(window.rows(), ElementsAre("Add Condition…", "Set This Locomotive Speed to 100%",
                                         "Wait 2.5 seconds", "Add Command…"));
}

TEST_F(Editor, moves_and_deletes_lines_within_their_own_list) {
  for (const bool occupied : {true, false}) add_occupied().choose_occupied(occupied);
  for (const double seconds : {1, 2, 3}) add_wait(seconds);
  Window window(script);
  Window other(script);
  const auto expect = [&](const Texts& rows) {
    EXPECT_EQ(window.rows(), rows);
    EXPECT_EQ(other.rows(), rows) << "in the other window";
  };
  window.select(3);
  for (const char* selected : {"Wait 1 seconds", "Wait 1 seconds", "Wait 1 seconds"}) {
    EXPECT_EQ(window.selected(), selected);
    window.button("gtk-go-down").clicked();
  }
  EXPECT_FALSE(window.button("gtk-go-down").get_sensitive());
  EXPECT_TRUE(window.button("gtk-go-up").get_sensitive());
  window.select(4);
  window.press({GDK_Up, GDK_Up}, GDK_MOD1_MASK);
  EXPECT_EQ(window.selected(), "Wait 3 seconds");
  window.select(0);
  window.press({GDK_Up, GDK_Down, GDK_Down}, GDK_MOD1_MASK);
  const Texts all = {"When Any Block is Unoccupied",
                     "And Any Block is Occupied",
                     "Add Condition…",
                     "Wait 3 seconds",
                     "Wait 2 seconds",
                     "Wait 1 seconds",
                     "Add Command…"};
  expect(all);
  for (const unsigned row : {2U, 6U}) {
    window.select(row);
    window.press({GDK_Delete, GDK_KP_Delete});
    EXPECT_FALSE(window.button("Delete").get_sensitive());
  }
  window.list().get_selection()->unselect_all();
  window.button("Delete").clicked();
  expect(all);
  other.select(4);
  other.button("Delete").clicked();
  EXPECT_EQ(other.selected(), "Wait 1 seconds") << "the next one";
  window.select(0);
  window.press({GDK_Delete});
  expect({"When Any Block is Occupied", "Add Condition…", "Wait 3 seconds", "Wait 1 seconds",
          "Add Command…"});
}

TEST_F(Editor, says_of_a_condition_that_sleeps_why_until_it_is_armed) {
  auto& line = add_occupied();
  add_wait(1);
  Window window(script);
  const auto reason = line.asleep_because();
  ASSERT_FALSE(reason.empty());
  EXPECT_TRUE(shows(*window, reason));
  EXPECT_TRUE(window.has_tooltip(0));
  EXPECT_FALSE(window.has_tooltip(2));
  window.press({GDK_Right, GDK_Return});
  choose("Any Block");
  EXPECT_FALSE(shows(*window, reason));
  EXPECT_FALSE(window.has_tooltip(0));
}

TEST_F(Editor, says_where_runs_are_and_why_a_condition_does_not_hold) {
  add_occupied().choose(&zone);
  add_occupied().choose(layout().get_blocks().add(new Zone));
  add_wait(600);
  add_occupied().set_or_flag(true);
  Window window(script);
  get_widget<Gtk::ToggleButton>(*window, "_Why Not?").set_active(true);
  const auto says = [&](unsigned row, const std::string& text) {
    window.select(row);
    for (int i = 0; i < 300 && !shows(*window, text); ++i) {
      handle_events();
      g_usleep(10'000);
    }
    EXPECT_TRUE(shows(*window, text)) << text;
  };
  says(0, "✗ does not hold");
  says(1, "–");
  zone.set_lok(&lok);
  EXPECT_EQ(script.num_runs(), 1u) << "by the other alternative";
  says(0, "✓ Express %1 in Station");
  says(1, "✗ does not hold");
  says(2,
       "✓ Express %1 in Station (has started). This condition sleeps: choose its block, or "
       "“Start Scripts”, and it watches the railway.");
  says(4, "Express %1 in Station");
}

TEST_F(Editor, gives_up_what_is_edited_when_the_line_or_the_script_ends) {
  const auto path = folder.write("a.zblt", layout().serialize());
  const std::function<void(Script&)> ends[] = {
      [](Script& ending) {
        ending.remove_condition(0);
        for (int i = 0; i < 3; ++i) ending.remove_command(0);
      },
      [](Script& ending) { ending.destroy(); },
      [](Script&) { layout().new_document(true); },
      [&path](Script&) { ASSERT_TRUE(Layout::open(path)); },
  };
  for (const auto& end : ends) {
    for (const unsigned row : {0U, 2U, 3U, 4U}) {
      auto& ending = *layout().get_scripts().add(new Script);
      ending.add_condition(new ScriptEventOccupied);
      for (const char* key : {"wait", "set-speed", "get-speed"}) {
        ending.add_command(create_script_command(key, ending));
      }
      Window window(ending);
      window.click(row, row < 3 ? 1 : 2);
      EXPECT_TRUE(row == 0 ? open_menu() != nullptr : window.editor<Gtk::Entry>() != nullptr);
      if (row != 0) window.type("7");
      end(ending);
      handle_events();
      EXPECT_FALSE(open_menu());
      if (!window.is_open()) continue;
      EXPECT_EQ(&end, &ends[0]);
      EXPECT_THAT(window.rows(), ElementsAre("Add Condition…", "Add Command…"));
      window.press({GDK_Return, GDK_Escape});
    }
  }
}

TEST_F(Editor, keeps_the_words_of_conditions_in_step_with_their_places) {
  add_occupied();
  Window window(script);
  add_occupied().set_or_flag(true);
  add_occupied();
  EXPECT_EQ(window.rows()[2], "And Any Block is Occupied");
  script.set_while(true);
  EXPECT_THAT(window.rows(),
              ElementsAre("While Any Block is Occupied", "Or Any Block is Occupied",
                          "And Any Block is Occupied", "Add Condition…", "Add Command…"));
  script.remove_condition(0);
  window.click(1, 0);
  choose("Or");
  EXPECT_THAT(window.rows(), ElementsAre("While Any Block is Occupied", "Or Any Block is Occupied",
                                         "Add Condition…", "Add Command…"));
}

TEST_F(Editor, stands_open_when_another_window_changes_another_line) {
  add_wait(1);
  auto& second = add_wait(2);
  Window window(script);
  window.click(1, 1);
  window.type("9");
  second.set_spin_value(1, 5);
  zone.set_name("Elsewhere");
  EXPECT_EQ(window.rows()[2], "Wait 5 seconds");
  window.press({GDK_Return});
  EXPECT_EQ(window.rows()[1], "Wait 9 seconds");
}

TEST_F(Editor, takes_over_what_is_being_typed_when_it_closes_or_the_layout_is_saved) {
  install_layout_dialogs();
  add_wait(1);
  Window window(script);
  window.click(1, 1);
  window.type("9");
  const auto path = folder.file("a.zblt");
  layout().save_to(Glib::filename_to_uri(path), false);
  EXPECT_THAT(bytes_of(path), testing::HasSubstr("[wait, 9]"));
  EXPECT_FALSE(window.editor<Gtk::Entry>());
  // The list of a name has a window of its own, which goes with it.
  script.add_command(create_script_command("get-speed", script));
  EXPECT_EQ(window.rows()[2], "Get This Locomotive Speed as Speed");
  window.click(2, 2);
  ASSERT_TRUE(window.editor<Gtk::Entry>());
  window.type("Slow");
  layout().save();
  EXPECT_THAT(bytes_of(path), testing::HasSubstr("[get-speed, This, Slow]"));
  window.click(1, 1);
  window.type("7");
  window.press({GDK_w}, GDK_CONTROL_MASK);
  EXPECT_FALSE(window.is_open());
  EXPECT_EQ(script.get_command(0)->get_arg_text(1), "7");
}

TEST_F(Editor, searches_among_many_blocks_by_what_is_typed) {
  for (int i = 0; i < 25; ++i) layout().get_blocks().add(new Zone);
  zone.set_name("Große Kurve");
  for (const bool ends : {false, true}) {
    auto& line = add_occupied();
    Window window(script);
    window.click(script.get_num_conditions() - 1, 1);
    EXPECT_THAT(offered(), ElementsAre("Any Block", "This Block", "", "Search…"));
    choose("Search…");
    auto* finder = shown_window<ObjectFinder>();
    ASSERT_TRUE(finder);
    get_widget<Gtk::Entry>(*finder).set_text("große");
    if (ends) {
      script.remove_condition(1);
    } else {
      press_key(*finder, GDK_Return);
      EXPECT_EQ(line.get_block(), &zone);
    }
    handle_events();
    EXPECT_FALSE(shown_window<ObjectFinder>());
  }
}

TEST_F(Editor, is_opened_from_the_panel_of_its_script_and_wakes_it_there) {
  auto& line = add_occupied();
  line.choose(&zone);
  Gtk::Window panels;
  Gtk::VBox box;
  panels.add(box);
  box.pack_start(*Gtk::manage(script.make_properties_panel({})));
  box.pack_start(*Gtk::manage(layout().get_scripts().make_properties_panel({})));
  const auto sensitive = [&](const char* label) {
    return get_widget<Gtk::Button>(box, label).get_sensitive();
  };
  for (const char* label : {"_Start Script", "_Start Scripts"}) {
    EXPECT_FALSE(sensitive(label));
    auto& asleep = add_occupied();
    EXPECT_TRUE(sensitive("_Start Script"));
    EXPECT_TRUE(sensitive("_Start Scripts"));
    get_widget<Gtk::Button>(box, label).clicked();
    EXPECT_TRUE(asleep.is_armed());
    EXPECT_FALSE(sensitive(label));
  }
  get_widget<Gtk::Button>(box, "_New Script").clicked();
  EXPECT_EQ(layout().get_scripts().child_count(), 2U);
  get_widget<Gtk::Button>(box, "_Edit Script").clicked();
  EXPECT_TRUE(shown_window<ScriptEditor>());
  script.destroy();
  handle_events();
  EXPECT_FALSE(shown_window<ScriptEditor>());
}

TEST_F(Editor, its_edits_are_steps_of_the_window_from_which_it_was_opened) {
  EditHistory::install();
  for (const double seconds : {2, 3}) add_wait(seconds);
  Gtk::Window panels;
  EditHistory history(panels);
  panels.add(*Gtk::manage(script.make_properties_panel({})));
  get_widget<Gtk::Button>(panels, "_Edit Script").clicked();
  handle_events();
  ASSERT_TRUE(shown_window<ScriptEditor>());
  auto& editor = *shown_window<ScriptEditor>();
  auto& list = get_widget<Gtk::TreeView>(editor);
  const auto chosen = [&list] {
    handle_events();
    const auto row = list.get_selection()->get_selected();
    return row ? row->get_value(ScriptRows::columns().text).raw() : "";
  };
  list.set_cursor(Gtk::TreePath("2"));
  const auto second = chosen();
  list.set_cursor(Gtk::TreePath("1"));
  const auto first = chosen();
  get_widget<Gtk::Button>(editor, "Delete").clicked();
  handle_events();
  EXPECT_EQ(script.get_num_commands(), 1U);
  EXPECT_EQ(chosen(), second);
  press_key(editor, GDK_z, GDK_CONTROL_MASK);
  EXPECT_EQ(script.get_num_commands(), 2U);
  EXPECT_EQ(chosen(), second) << "undo puts another line above it";
  list.set_cursor(Gtk::TreePath("1"));
  press_key(editor, GDK_z, GDK_CONTROL_MASK | GDK_SHIFT_MASK);
  EXPECT_EQ(script.get_num_commands(), 1U);
  EXPECT_EQ(chosen(), second) << "it stands where the chosen one stood";
  history.undo();
  EXPECT_EQ(script.get_num_commands(), 2U);
  EXPECT_NE(first, second);
}

}  // namespace
}  // namespace zemblar::test
