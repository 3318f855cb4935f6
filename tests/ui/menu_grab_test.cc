// Menus in unusual hours: while another program holds the pointer, and when their dialog has gone.

#include <gtkmm/checkmenuitem.h>
#include <gtkmm/dialog.h>
#include <gtkmm/entry.h>
#include <gtkmm/menu.h>
#include <gtkmm/menuitem.h>

#include <functional>
#include <vector>

#include "scripts/script.h"
#include "tests/support/layout_fixture.h"
#include "tests/ui/other_program.h"
#include "tests/ui/widget_search.h"
#include "ui/scripts/script_menu.h"
#include "ui/toolkit/edit_history.h"
#include "ui/toolkit/menu_owner.h"
#include "ui/toolkit/object_picker.h"
#include "ui/toolkit/popup.h"
#include "ui/windows/layout_dialogs.h"

namespace zemblar::test {
namespace {

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
    ASSERT_TRUE(other.has_pointer());
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
  auto* chosen = Gtk::manage(new Gtk::CheckMenuItem("Two"));
  chosen->set_active();
  chosen->show();
  menu.append(*chosen);
  popup_below(menu, entry);
  EXPECT_EQ(chosen->get_state(), Gtk::STATE_PRELIGHT) << "Return changes nothing";
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
  EditHistory::dispatch(make_event(GDK_MOTION_NOTIFY, entry.get_window()->gobj()).get());
  EXPECT_EQ(gtk_grab_get_current(), nullptr);
}

// Assistive technology can open it without the menu that it hangs on.
TEST_F(MenuGrabTest, a_submenu_closes_when_the_menu_above_it_is_not_shown) {
  Gtk::Menu submenu;
  submenu.append(*Gtk::manage(new Gtk::MenuItem("Two")));
  submenu.show_all();
  auto& item = menu.items().front();
  item.set_submenu(submenu);
  menu.select_item(item);
  gtk_menu_popup(submenu.gobj(), GTK_WIDGET(menu.gobj()), GTK_WIDGET(item.gobj()), nullptr, nullptr,
                 0, GDK_CURRENT_TIME);
  ASSERT_TRUE(submenu.get_mapped());
  EditHistory::dispatch(make_event(GDK_ENTER_NOTIFY, entry.get_window()->gobj()).get());
  EXPECT_FALSE(submenu.get_mapped());
  EXPECT_EQ(gtk_grab_get_current(), nullptr);
  item.remove_submenu();
}

void visit(GtkWidget* widget, const std::function<void(GtkWidget*)>& act) {
  act(widget);
  if (!GTK_IS_CONTAINER(widget)) return;
  const auto each = [](GtkWidget* child, gpointer data) {
    visit(child, *static_cast<const std::function<void(GtkWidget*)>*>(data));
  };
  gtk_container_forall(GTK_CONTAINER(widget), each,
                       const_cast<void*>(static_cast<const void*>(&act)));
}

std::vector<GtkWidget*> shown_menus() {
  std::vector<GtkWidget*> menus;
  auto* windows = gtk_window_list_toplevels();
  for (auto* next = windows; next; next = next->next) {
    auto* menu = gtk_bin_get_child(GTK_BIN(next->data));
    if (GTK_IS_MENU(menu) && gtk_widget_get_mapped(menu)) menus.push_back(menu);
  }
  g_list_free(windows);
  return menus;
}

/// Asks every list in an open dialog for its menu, then answers the dialog as Escape would.
bool ask_for_menus_and_leave(std::vector<GtkWidget*>& menus) {
  for (auto* window : Gtk::Window::list_toplevels()) {
    if (!dynamic_cast<Gtk::Dialog*>(window) || !window->get_mapped()) continue;
    visit(GTK_WIDGET(window->gobj()), [](GtkWidget* part) {
      gboolean handled = FALSE;
      if (GTK_IS_TREE_VIEW(part)) g_signal_emit_by_name(part, "popup-menu", &handled);
    });
    menus = shown_menus();
    for (auto* menu : menus) g_object_ref(menu);
    gtk_dialog_response(GTK_DIALOG(window->gobj()), GTK_RESPONSE_DELETE_EVENT);
    return false;
  }
  return true;
}

// The menus stay in the toolkit's memory, and keep the address of the list that they stood in.
TEST_F(MenuGrabTest, the_menus_of_a_file_chooser_close_with_it_and_belong_to_nobody) {
  install_layout_dialogs();
  std::vector<GtkWidget*> menus;
  Glib::signal_idle().connect([&] { return ask_for_menus_and_leave(menus); });
  layout().save_as();
  EXPECT_FALSE(menus.empty());
  EXPECT_EQ(shown_menus(), std::vector<GtkWidget*>{});
  for (auto* menu : menus) {
    EditHistory::dispatch(make_event(GDK_KEY_RELEASE, gtk_widget_get_window(menu)).get());
    g_object_unref(menu);
  }
  handle_events();
  Layout::dialogs() = {};
}

// As one of a list that a file chooser takes away while it is open. It can never be ended.
TEST_F(MenuGrabTest, a_menu_belongs_to_nobody_when_what_it_hangs_on_has_gone) {
  Gtk::Window window;
  auto* const top = GTK_WIDGET(window.gobj());
  auto* const list = gtk_tree_view_new();
  gtk_container_add(GTK_CONTAINER(top), list);
  static auto* const menu = GTK_MENU(g_object_ref_sink(gtk_menu_new()));
  gtk_menu_attach_to_widget(menu, list, nullptr);
  EXPECT_EQ(owner_of_menu(menu), top);
  gtk_widget_destroy(list);
  EXPECT_EQ(owner_of_menu(menu), nullptr);
  end_menus_of(top);
}

}  // namespace
}  // namespace zemblar::test
