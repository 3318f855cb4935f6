// Copying the lines of scripts, and switching them off.

#include <gmock/gmock.h>
#include <gtkmm/clipboard.h>

#include "core/status.h"
#include "tests/ui/script_window.h"
#include "ui/panels/script_properties.h"
#include "ui/toolkit/edit_history.h"
#include "ui/toolkit/made_object.h"

namespace zemblar::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class LineMenuTest : public ScriptEditorTest {
 protected:
  LineMenuTest() {
    add_occupied().choose(&zone);
    for (const double seconds : {2, 3}) add_wait(seconds);
  }
  static std::string copied() { return Gtk::Clipboard::get()->wait_for_text(); }
};

TEST_F(LineMenuTest, lines_are_copied_as_text_and_switched_off_by_keys) {
  const ScriptWindow window(script);
  const auto key = [&](guint pressed) { window.press({pressed}, GDK_CONTROL_MASK); };
  const auto place = [&] {
    return window.list().get_model()->get_path(window.list().get_selection()->get_selected())[0];
  };
  window.select(2);
  key(GDK_c);
  EXPECT_THAT(copied(), HasSubstr("# Wait 2 seconds\n"));
  EXPECT_THAT(copied(), HasSubstr("- [wait, 2]\n"));
  window.select(3);
  key(GDK_v);
  EXPECT_THAT(window.rows(),
              ElementsAre("When Station is Occupied", "Add Condition…", "Wait 2 seconds",
                          "Wait 2 seconds", "Wait 3 seconds", "Add Command…"));
  EXPECT_EQ(place(), 3);
  window.select(0);
  key(GDK_x);
  EXPECT_EQ(script.get_num_conditions(), 0u);
  window.select(4);
  key(GDK_Insert);
  key(GDK_v);
  EXPECT_EQ(window.rows()[0], "When Station is Occupied") << "nothing was copied since";
  EXPECT_EQ(place(), 0);
  EXPECT_TRUE(script.get_condition(0)->is_armed());
  // On some keyboards the slash needs Shift.
  window.press({GDK_slash}, GDK_CONTROL_MASK | GDK_SHIFT_MASK);
  EXPECT_EQ(window.rows()[0], "When Station is Occupied (switched off)");
  EXPECT_TRUE(window.has_tooltip(0));
  window.select(1);
  key(GDK_slash);
  EXPECT_TRUE(shows(*window, "All conditions are switched off: the script never starts."));
  window.select(0);
  key(GDK_KP_Divide);
  EXPECT_EQ(window.rows()[0], "When Station is Occupied");
  Gtk::Clipboard::get()->set_text("Wait 2 seconds");
  key(GDK_v);
  EXPECT_EQ(window.rows().size(), 6u);
  EXPECT_EQ(get_status(), "The clipboard has no lines of a script that can be read.");
}

TEST_F(LineMenuTest, a_menu_at_the_line_shows_the_keys_and_what_is_switched_off) {
  const ScriptWindow window(script);
  window.click(2, 1, 0, 3);
  EXPECT_EQ(window.selected(), "Wait 2 seconds");
  EXPECT_THAT(offered(), ElementsAre("Cu_t", "_Copy", "_Paste", "", "Switched _Off", "_Delete", "",
                                     "Copy Whole _Script"));
  choose("Switched _Off");
  EXPECT_TRUE(script.get_command(0)->is_off());
  for (const bool was_off : {true, false}) {
    was_off ? window.press({GDK_Menu}) : window.press({GDK_F10}, GDK_SHIFT_MASK);
    ASSERT_TRUE(open_menu());
    auto& off = dynamic_cast<Gtk::CheckMenuItem&>(open_menu()->items()[4]);
    EXPECT_EQ(off.get_active(), was_off);
    choose("Switched _Off");
    EXPECT_EQ(script.get_command(0)->is_off(), !was_off);
  }
  window.select(4);
  window.press({GDK_Menu});
  EXPECT_FALSE(open_menu()->items()[0].get_sensitive()) << "no line";
  choose("Copy Whole _Script");
  EXPECT_THAT(copied(), HasSubstr("# Wait 3 seconds\n"));
}

/// A program that has the clipboard, and does not answer.
class DeafProgram {
 public:
  DeafProgram() : display_(gdk_display_open(nullptr)) {
    GdkWindowAttr look{};
    look.window_type = GDK_WINDOW_TOPLEVEL;
    look.wclass = GDK_INPUT_ONLY;
    auto* root = gdk_screen_get_root_window(gdk_display_get_default_screen(display_));
    gdk_selection_owner_set_for_display(display_, gdk_window_new(root, &look, 0),
                                        GDK_SELECTION_CLIPBOARD, GDK_CURRENT_TIME, FALSE);
    gdk_display_sync(display_);
    handle_events();
  }
  ~DeafProgram() { Gtk::Clipboard::get()->set_text(""); }
  DeafProgram(const DeafProgram&) = delete;
  DeafProgram& operator=(const DeafProgram&) = delete;

 private:
  GdkDisplay* display_;  // open as long as the tests are
};

TEST_F(LineMenuTest, a_paste_is_one_step_of_undo_also_in_a_window_that_closes_meanwhile) {
  EditHistory::install();
  Gtk::Window panels;
  EditHistory history(panels);
  Gtk::VBox box;
  panels.add(box);
  box.pack_start(*Gtk::manage(script.make_properties_panel({})));
  auto* scripts_panel = layout().get_scripts().make_properties_panel({});
  box.pack_start(*Gtk::manage(scripts_panel));
  const auto click = [&](const char* label) {
    get_widget<Gtk::Button>(box, label).clicked();
    handle_events();
  };
  // As when the new script is selected.
  const ScopedConnection selects =
      signal_object_made().connect([&](Object&) { delete std::exchange(scripts_panel, nullptr); });
  click("_Copy Script");
  click("_Paste Script");
  ASSERT_EQ(layout().get_scripts().child_count(), 2u);
  EXPECT_TRUE(dynamic_cast<Script&>(*layout().get_scripts().child_at(1)).sleeps());
  history.undo();
  EXPECT_EQ(layout().get_scripts().child_count(), 1u);

  click("_Edit Script");
  press_key(*shown_window<ScriptEditor>(), GDK_v, GDK_CONTROL_MASK);
  EXPECT_EQ(script.get_num_conditions(), 2u);
  EXPECT_EQ(script.get_num_commands(), 4u);
  history.undo();
  EXPECT_EQ(script.get_num_conditions(), 1u);
  EXPECT_EQ(script.get_num_commands(), 2u);

  const DeafProgram program;
  press_key(*shown_window<ScriptEditor>(), GDK_v, GDK_CONTROL_MASK);
  EXPECT_TRUE(EditJournal::get().is_writing());
  shown_window<ScriptEditor>()->hide();
  handle_events();
  EXPECT_FALSE(EditJournal::get().is_writing());
  EXPECT_EQ(script.get_num_commands(), 2u);
}

}  // namespace
}  // namespace zemblar::test
