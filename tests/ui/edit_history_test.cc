// What is done in a window is taken back in it.

#include <gmock/gmock.h>
#include <gtkmm/button.h>
#include <gtkmm/entry.h>
#include <gtkmm/eventbox.h>
#include <gtkmm/menu.h>
#include <gtkmm/menuitem.h>

#include <memory>

#include "core/status.h"
#include "core/toplevel.h"
#include "locomotives/lok.h"
#include "locomotives/moving_trains.h"
#include "tests/support/layout_fixture.h"
#include "tests/support/power_station.h"
#include "tests/ui/keys.h"
#include "tests/ui/widget_search.h"
#include "track/zone.h"
#include "ui/toolkit/edit_history.h"
#include "ui/windows/track_editor.h"

namespace zemblar::test {
namespace {

/// A window in which every event puts another zone into the layout.
class EditHistoryTest : public LayoutTest {
 protected:
  EditHistoryTest() {
    EditHistory::install();
    layout().new_document(true);
    area.add_events(Gdk::BUTTON_PRESS_MASK | Gdk::BUTTON_RELEASE_MASK | Gdk::POINTER_MOTION_MASK);
    area.signal_event().connect(sigc::ptr_fun(&work));
    window.add(area);
    window.show_all();
    handle_events();
  }

  static bool work(GdkEvent* event) {
    const bool is_work = event->type == GDK_BUTTON_PRESS || event->type == GDK_BUTTON_RELEASE ||
                         event->type == GDK_MOTION_NOTIFY;
    if (is_work) add_zone();
    return is_work;
  }
  static void add_zone() { layout().get_blocks().add(new Zone); }
  static unsigned zones() { return layout().get_blocks().child_count(); }
  static void send(Gtk::Widget& widget, GdkEventType type) {
    EditHistory::dispatch(make_event(type, widget.get_window()->gobj()).get());
  }
  unsigned steps() {
    unsigned count = 0;
    for (; history.steps().next_undo(); ++count) history.undo();
    for (auto redone = count; redone > 0; --redone) history.redo();
    return count;
  }

  Gtk::Window window;
  Gtk::EventBox area;
  EditHistory history{window};
};

TEST_F(EditHistoryTest, one_press_is_one_step_until_the_button_is_released) {
  send(area, GDK_MOTION_NOTIFY);
  send(area, GDK_MOTION_NOTIFY);
  EXPECT_EQ(steps(), 2u);
  send(area, GDK_BUTTON_PRESS);
  for (int i = 0; i < 3; ++i) send(area, GDK_MOTION_NOTIFY);
  send(area, GDK_BUTTON_RELEASE);
  EXPECT_EQ(zones(), 7u);
  EXPECT_EQ(steps(), 3u);
  history.undo();
  EXPECT_EQ(zones(), 2u);
  history.redo();
  EXPECT_EQ(zones(), 7u);
  // Undo in the middle: what has been done so far is the step.
  send(area, GDK_BUTTON_PRESS);
  send(area, GDK_MOTION_NOTIFY);
  history.undo();
  EXPECT_EQ(zones(), 7u);
  send(area, GDK_BUTTON_RELEASE);
  history.undo();
  EXPECT_THAT(get_status().raw(), testing::StartsWith("Undone"));
  send(area, GDK_MOTION_NOTIFY);
  EXPECT_EQ(get_status(), "") << "it is not about the newest step";
}

// A key that closes it may come to another window.
TEST_F(EditHistoryTest, a_window_may_end_while_a_button_is_held_in_it) {
  auto other = std::make_unique<Gtk::Window>();
  other->add_events(Gdk::BUTTON_PRESS_MASK);
  other->signal_event().connect(sigc::ptr_fun(&work));
  other->show();
  handle_events();
  auto its_history = std::make_unique<EditHistory>(*other);
  send(*other, GDK_BUTTON_PRESS);
  send(area, GDK_KEY_PRESS);
  its_history.reset();
  other.reset();
  send(area, GDK_BUTTON_RELEASE);
  EXPECT_EQ(zones(), 2u);
  EXPECT_EQ(steps(), 0u);
}

TEST_F(EditHistoryTest, dialogs_and_menus_belong_to_the_window_and_other_windows_do_not) {
  Gtk::Window dialog;
  Gtk::Window stranger;
  for (auto* other : {&dialog, &stranger}) {
    other->add_events(Gdk::POINTER_MOTION_MASK);
    other->signal_event().connect(sigc::ptr_fun(&work));
    other->show();
  }
  dialog.set_transient_for(window);
  handle_events();
  send(dialog, GDK_MOTION_NOTIFY);
  EXPECT_EQ(steps(), 1u);
  send(stranger, GDK_MOTION_NOTIFY);
  add_zone();  // a device, or a script
  EXPECT_EQ(zones(), 3u);
  EXPECT_EQ(steps(), 1u);
}

TEST_F(EditHistoryTest, what_is_done_without_an_event_is_a_step_as_well) {
  Gtk::Button button("Make");
  button.signal_clicked().connect([] { add_zone(); });
  window.remove();
  window.add(button);
  button.show();
  button.clicked();
  EXPECT_EQ(steps(), 0u) << "not before the turn is over";
  handle_events();
  EXPECT_EQ(steps(), 1u);
  add_zone();
  handle_events();
  EXPECT_EQ(steps(), 1u);

  Gtk::Menu menu;
  gtk_menu_attach_to_widget(menu.gobj(), GTK_WIDGET(button.gobj()), nullptr);
  Gtk::MenuItem item("Make");
  item.signal_activate().connect([] { add_zone(); });
  menu.append(item);
  item.activate();
  handle_events();
  EXPECT_EQ(zones(), 3u);
  EXPECT_EQ(steps(), 2u);
  window.remove();
}

// No other device reaches the trains of a station.
TEST_F(EditHistoryTest, an_undo_that_ends_a_station_waits_until_its_trains_stand) {
  VirtualClock clock;
  TrackEditor::open();
  Gtk::Window* editor = shown_window<TrackEditor>();
  ASSERT_TRUE(editor);
  Gtk::Window dialog;
  Gtk::Button add;
  dialog.set_transient_for(*editor);
  dialog.add(add);
  PowerStation* station = nullptr;
  add.signal_clicked().connect([&] { station = layout().get_devices().add(new PowerStation); });
  add.clicked();
  handle_events();
  station->set_active(true);
  auto* lok = layout().get_loks().add(new Lok);
  lok->set_speed(60);
  ASSERT_TRUE(any_train_moves(station));
  press_key(*editor, GDK_KEY_z, GDK_CONTROL_MASK);
  EXPECT_EQ(lok->get_speed(), 0u);
  EXPECT_EQ(layout().get_devices().child_count(), 1u);
  clock.advance(std::chrono::seconds(2));
  EXPECT_EQ(layout().get_devices().child_count(), 0u);
  editor->hide();
  handle_events();
}

}  // namespace
}  // namespace zemblar::test
