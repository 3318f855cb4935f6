// Menus that are asked for while another program holds the pointer.

#include <gtkmm/entry.h>
#include <gtkmm/menu.h>
#include <gtkmm/menuitem.h>

#include "scripts/script.h"
#include "tests/support/layout_fixture.h"
#include "tests/ui/widget_search.h"
#include "ui/edit_history.h"
#include "ui/object_picker.h"
#include "ui/popup.h"
#include "ui/script_menu.h"

namespace zemblar::test {
namespace {

/// A window manager while a window is being moved, say.
class OtherProgram {
 public:
  OtherProgram() {
    static auto* connection = gdk_display_open(nullptr);
    display_ = connection;
    auto* root = gdk_screen_get_root_window(gdk_display_get_default_screen(display_));
    const auto taken =
        gdk_pointer_grab(root, FALSE, GDK_BUTTON_PRESS_MASK, nullptr, nullptr, GDK_CURRENT_TIME);
    EXPECT_EQ(taken, GDK_GRAB_SUCCESS);
  }
  ~OtherProgram() {
    gdk_display_pointer_ungrab(display_, GDK_CURRENT_TIME);
    gdk_display_sync(display_);
  }

 private:
  GdkDisplay* display_;
};

class MenuGrabTest : public LayoutTest {
 protected:
  MenuGrabTest() {
    menu.append(*Gtk::manage(new Gtk::MenuItem("One")));
    menu.show_all();
    window.add(entry);
    window.show_all();
    handle_events();
  }

  Gtk::Window window;
  Gtk::Entry entry;
  Gtk::Menu menu;
};

TEST_F(MenuGrabTest, a_menu_that_cannot_be_shown_takes_no_input) {
  {
    const OtherProgram other;
    popup_below(menu, entry);
    EXPECT_FALSE(menu.get_visible());
    EXPECT_EQ(gtk_grab_get_current(), nullptr);

    ObjectPicker picker;
    picker.ask(
        &window, &entry, lok_choices(), [](zemblar::Object*) {}, true);
    EXPECT_EQ(gtk_grab_get_current(), nullptr);

    auto* script = layout().get_scripts().add(new Script);
    ScriptMenu script_menu;
    script_menu.pop_up({ScriptRowType::add_command, dynamic_cast<Script*>(script)}, ScriptRow::word,
                       {0, 0, 10, 10}, &window, [](ScriptLine&) {});
    EXPECT_FALSE(script_menu.is_open());
    EXPECT_EQ(gtk_grab_get_current(), nullptr);
  }
  popup_below(menu, entry);
  EXPECT_EQ(gtk_grab_get_current(), GTK_WIDGET(menu.gobj()));
  EXPECT_TRUE(menu.get_active());
  menu.popdown();
}

// The toolkit's own fields select an entry of a menu that is not there.
TEST_F(MenuGrabTest, the_menu_of_a_text_field_lets_go_with_the_next_event) {
  {
    const OtherProgram other;
    entry.set_text("selected");
    entry.select_region(0, -1);
    gboolean shown = FALSE;
    g_signal_emit_by_name(entry.gobj(), "popup-menu", &shown);
    // It asks for the clipboard first.
    bool given_up = false;
    const ScopedConnection limit =
        Glib::signal_timeout().connect([&] { return given_up = true, false; }, 10000);
    while (!gtk_grab_get_current() && !given_up) Gtk::Main::iteration(true);
    ASSERT_FALSE(given_up) << "the toolkit has learned it";
  }
  auto* event = gdk_event_new(GDK_MOTION_NOTIFY);
  event->any.window = GDK_WINDOW(g_object_ref(entry.get_window()->gobj()));
  EditHistory::dispatch(event);
  gdk_event_free(event);
  EXPECT_EQ(gtk_grab_get_current(), nullptr);
}

}  // namespace
}  // namespace zemblar::test
