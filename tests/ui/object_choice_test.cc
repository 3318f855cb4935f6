// How one of the layout's objects is chosen: by a menu, or among many by typing.

#include <gtkmm/checkmenuitem.h>
#include <gtkmm/entry.h>
#include <gtkmm/treeview.h>

#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "runtime/timer.h"
#include "tests/support/layout_fixture.h"
#include "tests/ui/widget_search.h"
#include "ui/toolkit/object_button.h"
#include "ui/toolkit/object_finder.h"

namespace zemblar::test {
namespace {

class ObjectChoiceTest : public LayoutTest {
 protected:
  ~ObjectChoiceTest() override { layout().new_document(false); }

  static Lok* add_lok(const char* name) {
    auto* lok = layout().get_loks().add(new Lok);
    lok->set_name(name);
    return lok;
  }

  VirtualClock clock;
};

/// A "!" behind what cannot be chosen, a "*" behind what has a mark.
std::string menu_text(Gtk::Menu& menu) {
  std::string text;
  for (auto* child : menu.get_children()) {
    auto* item = dynamic_cast<Gtk::MenuItem*>(child);
    if (!item || item->get_label().empty()) continue;
    text += (text.empty() ? "" : ", ") + item->get_label().raw();
    if (!item->get_sensitive()) text += "!";
    const auto* marked = dynamic_cast<Gtk::CheckMenuItem*>(child);
    if (marked && marked->get_active()) text += "*";
    if (auto* submenu = item->get_submenu()) text += " [" + menu_text(*submenu) + "]";
  }
  return text;
}

TEST_F(ObjectChoiceTest, the_selector_offers_all_locomotives_with_groups_as_submenus) {
  ObjectButton button(lok_choices());
  EXPECT_EQ(menu_text(*button.make_menu()).rfind("(None)*, Locomotives!, No locomotive yet", 0),
            0U);
  auto* express = add_lok("Express");
  auto* depot = layout().get_loks().add(new LokGroup);
  depot->set_name("Depot");
  layout().get_loks().add(new LokGroup);
  auto* steam = depot->add(new LokGroup);
  steam->set_name("Steam");
  steam->add(new Lok)->set_name("Old_One");
  EXPECT_EQ(button.get_tooltip_text(), "");
  button.explain("Who drives");
  button.set_object(steam->child_at(0));
  EXPECT_EQ(menu_text(*button.make_menu()),
            "(None), Locomotives!, Express, Depot* [Steam* [Old_One*]]");
  EXPECT_EQ(button.get_tooltip_text(), "Depot › Steam › Old_One\nWho drives");
  button.set_object(nullptr);
  const auto menu = button.make_menu();
  EXPECT_EQ(menu_text(*menu), "(None)*, Locomotives!, Express, Depot [Steam [Old_One]]");

  auto* item = dynamic_cast<Gtk::MenuItem*>(std::vector<Gtk::Widget*>(menu->get_children()).at(3));
  item->activate();
  EXPECT_EQ(button.get_object(), express);
  express->set_name("Night Express");
  EXPECT_EQ(button.get_accessible()->get_name(), "Night Express");
  express->destroy();
  EXPECT_EQ(button.get_accessible()->get_name(), "(None)");
  item->activate();
  EXPECT_EQ(button.get_object(), nullptr);
}

TEST_F(ObjectChoiceTest, one_of_many_locomotives_is_found_by_typing) {
  auto* depot = layout().get_loks().add(new LokGroup);
  for (int number = 10; number < 60; ++number) {
    depot->add(new Lok)->set_name(Glib::ustring::compose("Railcar %1", number));
  }
  auto* express = add_lok("Express");
  std::vector<zemblar::Object*> chosen;
  ObjectFinder finder(
      lok_choices(), [&](auto* object) { chosen.push_back(object); }, true);
  auto& entry = get_widget<Gtk::Entry>(finder);
  auto& list = get_widget<Gtk::TreeView>(finder);
  const auto rows = [&] { return list.get_model()->children().size(); };
  const auto press = [&](guint key) {
    GdkEventKey event{};
    event.type = GDK_KEY_PRESS;
    event.window = finder.get_window()->gobj();
    event.keyval = key;
    finder.event(reinterpret_cast<GdkEvent*>(&event));
  };
  finder.show();
  EXPECT_EQ(rows(), 52u) << "the row for none as well";
  entry.set_text("CAR 4");
  EXPECT_EQ(rows(), 10u);
  for (const auto key : {GDK_KEY_Down, GDK_KEY_Page_Down, GDK_KEY_Up}) press(key);
  express->set_name("Night Express");  // by somebody else
  press(GDK_KEY_Return);
  EXPECT_EQ(chosen, std::vector<zemblar::Object*>{depot->find_child("Railcar 48")});
  EXPECT_FALSE(finder.get_visible());

  finder.show();
  entry.set_text("expr");
  express->destroy();
  EXPECT_EQ(rows(), 0u);
  press(GDK_KEY_Return);
  entry.set_text("");
  press(GDK_KEY_Return);
  EXPECT_EQ(chosen.back(), depot->find_child("Railcar 10")) << "not none, which is the first row";
  finder.show();
  press(GDK_KEY_Escape);
  EXPECT_FALSE(finder.get_visible());
  EXPECT_EQ(chosen.size(), 2u);
  finder.show();
  handle_events();
  Gdk::Rectangle row;
  list.get_cell_area(Gtk::TreePath("3"), *list.get_column(0), row);
  for (const auto type : {GDK_BUTTON_PRESS, GDK_BUTTON_RELEASE}) {
    GdkEventButton event{};
    event.type = type;
    event.window = list.get_bin_window()->gobj();
    event.button = 1;
    event.x = row.get_x() + 2;
    event.y = row.get_y() + 2;
    list.event(reinterpret_cast<GdkEvent*>(&event));
  }
  EXPECT_TRUE(finder.get_visible()) << "a second press is for it, not for what lies below";
  clock.advance(std::chrono::seconds(1));
  EXPECT_EQ(chosen.back(), depot->find_child("Railcar 12")) << "by one click";
  EXPECT_FALSE(finder.get_visible());
  finder.show();
  layout().new_document(true);
  EXPECT_FALSE(finder.get_visible());
}

}  // namespace
}  // namespace zemblar::test
