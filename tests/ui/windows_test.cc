#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>
#include <gtkmm/toolbutton.h>

#include <string>
#include <vector>

#include "core/panel_factory.h"
#include "core/status.h"
#include "diagram/view.h"
#include "diagram/view_zone.h"
#include "locomotives/lok.h"
#include "tests/support/fake_station.h"
#include "tests/ui/keys.h"
#include "tests/ui/widget_search.h"
#include "track/zone.h"
#include "ui/canvas/runtime_view.h"
#include "ui/toolkit/stock.h"
#include "ui/windows/object_list.h"
#include "ui/windows/panel_view.h"
#include "ui/windows/power_buttons.h"
#include "ui/windows/properties_panel.h"
#include "ui/windows/track_editor.h"
#include "ui/windows/track_view.h"
#include "ui/windows/view_pages.h"

namespace zemblar {
namespace {

using test::FakeStation;
using test::find_widget;
using test::fresh_layout;
using test::handle_events;
using test::shows;

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

/// The fields from one that has the focus to where it comes by again.
std::vector<Gtk::Widget*> ring(Gtk::Window& window, unsigned modifiers = 0) {
  std::vector<Gtk::Widget*> fields{window.get_focus()};
  do {
    test::press_key(window, GDK_KEY_Tab, modifiers);
    fields.push_back(window.get_focus());
  } while (fields.back() != fields.front() && fields.size() < 100);
  return fields;
}

/// Whether the viewport around a widget, if there is one, shows it.
bool is_in_sight(Gtk::Widget& widget) {
  auto* port = widget.get_ancestor(GTK_TYPE_VIEWPORT);
  int x = 0;
  int y = 0;
  if (!port || !widget.translate_coordinates(*port, 0, 0, x, y)) return true;
  return y >= 0 && y + widget.get_height() <= port->get_height();
}

TEST(PropertiesPanel, keys_reach_its_fields_in_both_directions_and_bring_them_into_sight) {
  auto& layout = fresh_layout();
  auto* lok = layout.get_loks().add(new Lok);
  Gtk::Window window;
  Gtk::HPaned sides;
  Gtk::Button page("page");
  PropertiesPanel panel;
  sides.add1(page);
  sides.add2(panel);
  window.add(sides);
  window.set_default_size(600, 500);
  window.show_all();
  handle_events();
  test::give_focus(window);
  const auto walk = [&] {
    page.grab_focus();
    auto there = ring(window);
    EXPECT_GT(there.size(), 8U);
    for (auto* field : there) {
      field->grab_focus();
      EXPECT_TRUE(is_in_sight(*field)) << field->get_accessible()->get_name();
    }
    page.grab_focus();
    std::ranges::reverse(there);
    EXPECT_EQ(ring(window, GDK_SHIFT_MASK), there);
  };
  panel.show_object(lok);
  handle_events();
  walk();
  panel.reveal(*lok);
  handle_events();
  walk();
  page.grab_focus();
  find_widget<ObjectList>(panel, "")->get_selection()->unselect_all();
  handle_events();
  for (int presses = 0; presses < 6; ++presses) {
    test::press_key(window, GDK_KEY_F6);
    EXPECT_NE(window.get_focus(), presses == 0 ? &page : nullptr);
    EXPECT_FALSE(dynamic_cast<Gtk::ScrolledWindow*>(window.get_focus()));
  }
}

TEST(PropertiesPanel, what_is_made_while_something_is_looked_for_is_selected_if_it_matches) {
  auto& layout = fresh_layout();
  clear_status();
  PropertiesPanel panel;
  Gtk::Window window;
  window.add(panel);
  window.show_all();
  panel.reveal(layout.get_loks());
  find_widget<Gtk::Entry>(panel, "")->set_text("loc");
  handle_events();
  auto& list = test::get_widget<ObjectList>(panel);
  list.select(layout.get_loks());
  test::get_widget<Gtk::Button>(panel, "New _Locomotive").clicked();
  EXPECT_EQ(list.selected(), layout.get_loks().child_at(0));
  EXPECT_EQ(window.get_focus(), &list);
  EXPECT_EQ(get_status(), "");
  handle_events();
}

TEST(TrackEditor, says_that_the_list_keeps_the_focus_when_it_deletes_the_shown_view) {
  auto& layout = fresh_layout();
  layout.get_views().add(new View);
  TrackEditor::open();
  handle_events();
  auto* editor = test::shown_window<TrackEditor>();
  TrackEditor::show_object(*layout.get_views().child_at(0));
  auto& list = test::get_widget<ObjectList>(*editor);
  list.grab_focus();
  static AtkObject* heard = nullptr;
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS
  const auto tracker = atk_add_focus_tracker([](AtkObject* object) { heard = object; });
  test::press_key(*editor, GDK_KEY_Delete);
  atk_remove_focus_tracker(tracker);
  G_GNUC_END_IGNORE_DEPRECATIONS
  EXPECT_EQ(layout.get_views().child_count(), 1U);
  EXPECT_EQ(editor->get_focus(), &list);
  EXPECT_EQ(heard, list.get_accessible()->gobj()) << "not the next page's tab";
  editor->hide();
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

// As a key does in the turn after New, before anything is laid out.
TEST(ViewPages, has_a_current_page_at_once_when_one_can_be_seen_and_none_otherwise) {
  auto& layout = fresh_layout();
  Gtk::Window window;
  ViewPages pages([](View& view) { return scrolled(Gtk::manage(new RuntimeView(view))); },
                  ViewPages::Hidden::skip);
  Gtk::Menu menu;
  pages.append_zoom_items(menu, window.get_accel_group());
  window.add(pages);
  window.set_default_size(400, 300);
  window.show_all();
  const auto zoom = [&] { return pages.current_canvas()->get_zoom(); };
  const auto best_fit = [&] { menu.items().back().activate(); };
  const auto add_wide_view = [&] {
    auto* view = layout.get_views().add(new View);
    for (const int x : {-1000, 1000}) {
      view->add_object(new ViewZone(*layout.get_blocks().add(new Zone), {1.0 * x, 0}));
    }
    return view;
  };

  handle_events();
  layout.new_document(false);
  EXPECT_EQ(pages.current_canvas(), nullptr);
  best_fit();
  auto* first = add_wide_view();
  auto* second = add_wide_view();
  EXPECT_EQ(pages.current(), first);
  best_fit();
  handle_events();
  const auto fitting = zoom();
  EXPECT_NEAR(fitting, 0.18, 0.02) << "done as soon as there was a size";
  best_fit();
  EXPECT_NEAR(zoom(), fitting, 0.01);

  first->set_hidden(true);
  EXPECT_EQ(pages.current(), second);
  second->set_hidden(true);
  EXPECT_EQ(pages.current(), nullptr);
  best_fit();
  handle_events();
  auto* third = add_wide_view();
  EXPECT_EQ(pages.current(), third);
  third->set_hidden(true);
  first->set_hidden(false);
  EXPECT_EQ(pages.current(), first);
}

TEST(MainWindows, have_the_focus_on_the_drawing_and_never_on_a_tool) {
  for (const auto open : {&TrackView::open, &TrackEditor::open}) {
    auto& layout = fresh_layout();
    open();
    handle_events();
    Gtk::Window* window = test::shown_window<LayoutWindow>();
    const auto on_drawing = [&] {
      return dynamic_cast<DiagramCanvas*>(window->get_focus()) != nullptr;
    };
    EXPECT_TRUE(on_drawing());
    layout.get_blocks().add(new Zone);
    for (const auto key : {GDK_KEY_space, GDK_KEY_Return}) test::press_key(*window, key);
    EXPECT_FALSE(layout.get_blocks().empty());
    for (int presses = 0; presses < 40; ++presses) {
      test::press_key(*window, GDK_KEY_Tab);
      const auto* focus = window->get_focus();
      EXPECT_FALSE(focus && focus->get_ancestor(GTK_TYPE_TOOLBAR));
    }
    if (auto* sides = find_widget<Gtk::HPaned>(*window, "")) sides->set_position(0);
    handle_events();
    layout.new_document(true);
    handle_events();
    ASSERT_TRUE(on_drawing()) << "New has taken what had it";
    EXPECT_TRUE(window->get_focus()->get_mapped());
    window->hide();
    handle_events();
  }
}

TEST(MainWindows, live_on_behind_a_dialog_of_their_own) {
  fresh_layout();
  TrackView::open();
  handle_events();
  auto* window = test::shown_window<TrackView>();
  bool ended = false;
  window->add_destroy_notify_callback(&ended, [](void* flag) -> void* {
    *static_cast<bool*>(flag) = true;
    return nullptr;
  });
  bool ended_in_dialog = false;
  Glib::signal_idle().connect_once([&] {
    window->hide();
    handle_events();
    ended_in_dialog = ended;
  });
  handle_events();
  EXPECT_FALSE(ended_in_dialog);
  for (int waits = 0; waits < 20 && !ended; ++waits) {
    Glib::usleep(20'000);
    handle_events();
  }
  EXPECT_TRUE(ended);
}

TEST(TrackEditor, makes_what_a_tool_shows_where_there_is_a_view_and_no_zone_for_a_label) {
  auto& layout = fresh_layout();
  TrackEditor::open();
  handle_events();
  auto* editor = test::shown_window<TrackEditor>();
  auto& blocks = layout.get_blocks();
  const auto click = [editor](const Gtk::StockID& tool) {
    for (auto* child : test::get_widget<Gtk::Toolbar>(*editor).get_children()) {
      auto* button = dynamic_cast<Gtk::ToolButton*>(child);
      if (!button || button->get_stock_id() != tool.get_string()) continue;
      g_signal_emit_by_name(button->gobj(), "clicked");
    }
    handle_events();
  };
  click(Gtk::StockID("add-label"));
  EXPECT_TRUE(blocks.empty());
  click(Gtk::StockID("add-zone"));
  EXPECT_EQ(blocks.child_count(), 1u);
  // What was being placed goes with its view. Assistive technology presses insensitive tools too.
  while (!layout.get_views().empty()) (*layout.get_views().begin())->destroy();
  click(Gtk::StockID("add-zone"));
  EXPECT_TRUE(blocks.empty());
  editor->hide();
  handle_events();
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
  layout.get_devices().add(new FakeStation(1))->set_active(true);
  EXPECT_FALSE(sensitive());
  auto* bus = new FakeStation(0);
  auto* booster = bus->add(new FakeStation(2));
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
  layout.get_devices().add(new FakeStation(2))->set_active(true);
  layout.new_document(true);
  EXPECT_FALSE(sensitive());
}

}  // namespace
}  // namespace zemblar
