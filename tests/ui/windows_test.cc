#include <gtest/gtest.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>
#include <gtkmm/toolbutton.h>

#include <algorithm>
#include <string>
#include <vector>

#include "core/panel_factory.h"
#include "devices/device.h"
#include "diagram/view.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "tests/ui/widget_search.h"
#include "ui/object_list.h"
#include "ui/panel_view.h"
#include "ui/power_buttons.h"
#include "ui/view_pages.h"

namespace zemblar {
namespace {

using test::find_widget;
using test::handle_events;

Layout& fresh_layout() {
  Layout::get().new_document(true);
  return Layout::get();
}

void append_rows(const Gtk::TreeNodeChildren& rows, std::string& text) {
  for (const auto& row : rows) {
    Glib::ustring name;
    row.get_value(1, name);
    text += name.raw();
    if (row.children().empty()) {
      text += ' ';
      continue;
    }
    text += "(";
    append_rows(row.children(), text);
    text += ")";
  }
}

/// The rows' names, children in brackets.
std::string rows(ObjectList& list) {
  std::string text;
  append_rows(list.get_model()->children(), text);
  return text;
}

bool shows(Gtk::Widget& widget, const std::string& text) {
  if (auto* label = dynamic_cast<Gtk::Label*>(&widget)) return label->get_text().raw() == text;
  auto* container = dynamic_cast<Gtk::Container*>(&widget);
  if (!container) return false;
  const std::vector<Gtk::Widget*> children = container->get_children();
  return std::ranges::any_of(children, [&](auto* child) { return shows(*child, text); });
}

/// A piece of hardware that may be able to switch track power.
class Booster : public Device {
 public:
  explicit Booster(int power) : Glib::ObjectBase("Booster"), Device("Booster %1"), power_(power) {}
  [[nodiscard]] int supports(std::string_view feature) const override {
    return feature == "DCC/Power" ? power_ : 0;
  }

 private:
  int power_;
};

/// Its panel has a button that ends it.
class Mayfly : public Object {
 public:
  Mayfly() : Glib::ObjectBase("Mayfly"), Object("Mayfly %1") {}
};

void register_mayfly_panel() {
  register_panel(typeid(Mayfly), PanelKind::properties, [](Object& object, const auto&) {
    auto* button = new Gtk::Button("End");
    button->signal_clicked().connect([&object, text = std::string(100, 'x')] {
      object.destroy();
      EXPECT_EQ(text.size(), 100u);  // the button is still there while it is being served
    });
    return button;
  });
}

TEST(ObjectList, follows_what_is_added_renamed_removed_and_emptied) {
  auto& layout = fresh_layout();
  ObjectList list;
  const std::string others = "Points & Signals Blocks Devices Scripts )";
  EXPECT_EQ(rows(list), "New Layout(Views(View 1 )Locomotives " + others);

  auto* group = new LokGroup;
  group->add(new Lok)->set_name("Shunter");
  layout.get_loks().add(group)->set_name("Yard");
  layout.get_views().child_at(0)->set_name("Station");
  layout.set_name("Harbour");
  EXPECT_EQ(rows(list), "Harbour(Views(Station )Locomotives(Yard(Shunter ))" + others);

  group->child_at(0)->destroy();
  layout.get_views().destroy_children();
  EXPECT_EQ(rows(list), "Harbour(Views Locomotives(Yard )" + others);

  layout.new_document(true);
  EXPECT_EQ(rows(list), "New Layout(Views(View 1 )Locomotives " + others);
}

TEST(ObjectList, says_that_nothing_is_selected_before_a_selected_object_ends) {
  auto& layout = fresh_layout();
  ObjectList list;
  std::vector<Object*> seen;
  list.signal_selected().connect([&](Object* object) { seen.push_back(object); });
  auto* lok = layout.get_loks().add(new Lok);
  list.select(*lok);
  EXPECT_EQ(list.selected(), lok);
  lok->destroy();
  EXPECT_EQ(seen, (std::vector<Object*>{lok, nullptr}));
}

TEST(PanelView, lets_go_of_an_object_that_ends_itself_from_its_panel) {
  register_mayfly_panel();
  auto& layout = fresh_layout();
  auto* mayfly = layout.get_scripts().add(new Mayfly);
  Gtk::Window window;
  PanelView panel("Nothing is selected.");
  window.add(panel);
  panel.show_object(mayfly);
  find_widget<Gtk::Button>(panel, "End")->clicked();
  EXPECT_FALSE(find_widget<Gtk::Button>(panel, "End"));
  EXPECT_TRUE(shows(panel, "Nothing is selected."));
  handle_events();
}

TEST(ViewPages, shows_one_page_for_each_view_and_a_hint_for_none) {
  auto& layout = fresh_layout();
  Gtk::Window window;
  ViewPages pages([](View&) { return new Gtk::Label("canvas"); }, ViewPages::Hidden::skip);
  window.add(pages);
  window.show_all();
  std::vector<View*> current;
  pages.signal_current_changed().connect([&] { current.push_back(pages.current()); });

  auto* first = dynamic_cast<View*>(layout.get_views().child_at(0));
  EXPECT_EQ(pages.current(), first);
  auto* second = layout.get_views().add(new View);
  second->set_name("Yard");
  EXPECT_TRUE(shows(pages, "canvas"));

  first->destroy();
  EXPECT_EQ(pages.current(), second);
  ASSERT_FALSE(current.empty());
  EXPECT_EQ(current.back(), second);

  auto& notebook = test::get_widget<Gtk::Notebook>(pages);
  second->set_hidden(true);
  EXPECT_FALSE(notebook.get_visible());
  second->set_hidden(false);
  EXPECT_TRUE(notebook.get_visible());
  second->destroy();
  EXPECT_FALSE(notebook.get_visible());
  EXPECT_EQ(current.back(), nullptr);
  layout.new_document(true);
  EXPECT_TRUE(notebook.get_visible());
  EXPECT_EQ(notebook.get_n_pages(), 1);
}

TEST(PowerButtons, are_sensitive_while_a_device_in_service_can_switch_track_power) {
  auto& layout = fresh_layout();
  Gtk::Toolbar toolbar;
  PowerButtons buttons(toolbar);
  auto sensitive = [&] {
    const bool on = toolbar.get_nth_item(0)->get_sensitive();
    EXPECT_EQ(on, toolbar.get_nth_item(1)->get_sensitive());
    return on;
  };
  EXPECT_FALSE(sensitive());
  layout.get_devices().add(new Booster(1))->set_active(true);
  EXPECT_FALSE(sensitive());
  auto* bus = new Booster(0);
  auto* booster = bus->add(new Booster(2));
  layout.get_devices().add(bus);
  EXPECT_FALSE(sensitive());
  booster->set_active(true);
  EXPECT_TRUE(sensitive());
  booster->set_active(false);
  EXPECT_FALSE(sensitive());
  booster->set_active(true);
  EXPECT_TRUE(sensitive());
  bus->destroy();
  EXPECT_FALSE(sensitive());
  layout.get_devices().add(new Booster(2))->set_active(true);
  layout.new_document(true);
  EXPECT_FALSE(sensitive());
}

}  // namespace
}  // namespace zemblar
