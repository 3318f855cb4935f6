// The status line with its marks, its history, and the one stop for everything.

#include <gdk/gdkkeysyms.h>
#include <gtest/gtest.h>
#include <gtkmm/dialog.h>
#include <gtkmm/treeview.h>

#include "core/recovery_copy.h"
#include "core/status.h"
#include "locomotives/lok.h"
#include "runtime/timer.h"
#include "tests/support/layout_fixture.h"
#include "tests/support/power_station.h"
#include "tests/ui/keys.h"
#include "track/zone.h"
#include "ui/status/status_history.h"
#include "ui/status/statusbar.h"
#include "ui/status/stop_all.h"
#include "ui/throttle/lok_controller.h"
#include "ui/windows/status_marks.h"

namespace zemblar::test {
namespace {

using namespace std::chrono_literals;
using Kind = StatusShape::Kind;

class StatusBarTest : public LayoutTest {
 protected:
  StatusBarTest() { layout().new_document(true); }
  ~StatusBarTest() override { layout().new_document(false); }

  static PowerStation* add_booster() { return layout().get_devices().add(new PowerStation); }
  static void pulse() {
    layout().signal_pulse().emit();
    handle_events();
  }

  VirtualClock clock;
};

TEST_F(StatusBarTest, shows_power_links_and_trains_at_one_glance) {
  StatusMarks marks;
  std::string heard;
  marks.power().get_accessible()->signal_property_change().connect([&](AtkPropertyValues* change) {
    if (change->property_name == std::string("accessible-name")) {
      heard = marks.power().get_accessible()->get_name();
    }
  });
  const auto power = [&] {
    pulse();
    EXPECT_EQ(heard, marks.power().look().name.raw()) << "by a reader that runs already";
    return std::pair(marks.power().look().shape, marks.power().look().text.raw());
  };
  EXPECT_EQ(power(), std::pair(Kind::looking, std::string("No station")));
  auto* one = add_booster();
  auto* two = add_booster();
  pulse();
  ASSERT_EQ(marks.devices().size(), 2u);
  EXPECT_EQ(marks.devices()[0]->look().shape, Kind::looking);
  one->set_active(true);
  two->set_active(true);
  EXPECT_EQ(power(), std::pair(Kind::off, std::string("Power off")));
  one->track_power_is_on();
  EXPECT_EQ(power(), std::pair(Kind::waiting, std::string("Power differs")));
  EXPECT_NE(marks.power().look().sentence.raw().find("Booster 2: off"), std::string::npos);
  two->track_power_is_on();
  EXPECT_EQ(power(), std::pair(Kind::well, std::string("Power on")));

  two->lose();
  pulse();
  EXPECT_EQ(marks.devices()[0]->look().shape, Kind::well);
  const auto& lost = marks.devices()[1]->look();
  EXPECT_EQ(lost.shape, Kind::lost);
  EXPECT_EQ(lost.name, "Booster 2: lost");
  EXPECT_TRUE(lost.sentence.raw().ends_with("The cable was pulled."));
  one->destroy();
  pulse();
  ASSERT_EQ(marks.devices().size(), 1u);
  EXPECT_EQ(marks.devices()[0]->look().shape, Kind::lost);

  auto* lok = layout().get_loks().add(new Lok);
  pulse();
  EXPECT_FALSE(marks.held().get_visible() || marks.unplaced().get_visible());
  lok->set_brake(true);
  pulse();
  EXPECT_TRUE(marks.held().get_visible());
  EXPECT_EQ(marks.held().look().text, "1 held");
  lok->destroy();
  pulse();
  EXPECT_FALSE(marks.held().get_visible());
  EXPECT_EQ(marks.file().look().text, "New layout");
}

TEST_F(StatusBarTest, tells_of_work_that_is_in_no_file_until_it_is_undone_or_saved) {
  const TemporaryFolder folder;
  RecoveryCopy copies(folder.path() + "/recovery");
  layout().save_to("file://" + folder.path() + "/yard.zblt", true);
  copies.start({});
  StatusMarks marks;
  const auto text = [&] {
    clock.advance(40s);
    pulse();
    clock.advance(1s);
    pulse();
    return marks.file().look().text.raw();
  };
  EXPECT_EQ(text(), "yard.zblt");
  layout().set_name("Harbour");
  EXPECT_EQ(text(), "yard.zblt, unsaved");
  layout().set_name("New Layout");
  EXPECT_EQ(text(), "yard.zblt");
  layout().set_name("Harbour");
  EXPECT_EQ(text(), "yard.zblt, unsaved");
  layout().save();
  EXPECT_EQ(text(), "yard.zblt");
}

TEST_F(StatusBarTest, one_key_stops_all_trains_and_switches_the_power_off_when_it_comes_again) {
  static const bool installed = (StopAll::install(), true);
  ASSERT_TRUE(installed);
  auto* station = add_booster();
  station->set_active(true);
  station->track_power_is_on();
  auto* lok = layout().get_loks().add(new Lok);
  Gtk::Window window;
  Gtk::Dialog dialog("Question", window, true);
  window.show();
  dialog.show();
  handle_events();
  // As the display delivers it: to the window that it is about, through all grabs.
  GdkKeymapKey* places = nullptr;
  int count = 0;
  ASSERT_TRUE(gdk_keymap_get_entries_for_keyval(nullptr, GDK_KEY_space, &places, &count));
  const auto code = static_cast<guint16>(places[0].keycode);
  g_free(places);
  unsigned modifiers = GDK_CONTROL_MASK | GDK_SHIFT_MASK;
  const auto key = [&](Gtk::Window& target, GdkEventType type) {
    GdkEvent event{};
    event.key.type = type;
    event.key.window = target.get_window()->gobj();
    event.key.keyval = GDK_KEY_nobreakspace;  // as some layouts have it with Shift
    event.key.hardware_keycode = code;
    event.key.state = modifiers;
    gtk_main_do_event(&event);
  };
  const auto press = [&](Gtk::Window& target) {
    key(target, GDK_KEY_PRESS);
    key(target, GDK_KEY_RELEASE);
    handle_events();
  };
  for (auto* target : {static_cast<Gtk::Window*>(&window), static_cast<Gtk::Window*>(&dialog)}) {
    lok->set_speed(60);
    clock.advance(3s);
    press(*target);  // the dialog has the input to itself
    EXPECT_TRUE(lok->get_emergency_stop());
    EXPECT_TRUE(station->track_power());
  }
  clock.advance(1s);
  press(window);
  EXPECT_FALSE(station->track_power());
  EXPECT_NE(get_status().raw().find("power"), std::string::npos);

  // Other modifiers do not keep it back; without Control it is another key.
  clock.advance(5s);
  for (const auto& [state, stops] :
       {std::pair(GDK_CONTROL_MASK | GDK_SHIFT_MASK | GDK_MOD1_MASK | GDK_LOCK_MASK, true),
        std::pair(GDK_SHIFT_MASK | GDK_LOCK_MASK, false)}) {
    lok->set_speed(60);
    modifiers = static_cast<unsigned>(state);
    press(window);
    EXPECT_EQ(lok->get_emergency_stop(), stops);
  }
  modifiers = GDK_CONTROL_MASK | GDK_SHIFT_MASK;

  // A key that is held down is pressed once.
  station->track_power_is_on();
  clock.advance(5s);
  for (int i = 0; i < 50; ++i) {
    key(window, GDK_KEY_PRESS);
    clock.advance(i == 0 ? 600ms : 30ms);
  }
  handle_events();
  EXPECT_TRUE(station->track_power());
  // The window may never see it go up.
  lok->set_speed(60);
  clock.advance(1s);
  press(window);
  EXPECT_TRUE(lok->get_emergency_stop());
}

TEST_F(StatusBarTest, the_last_fifty_messages_can_be_read_again) {
  for (int i = 1; i <= 60; ++i) {
    set_status("Replaced at once");
    set_status("Message " + std::to_string(i));
    clock.advance(1s);
  }
  set_status("Message 60");
  clear_status();
  ASSERT_EQ(status_history().size(), 50u);
  EXPECT_EQ(status_history().front().text, "Message 60");
  EXPECT_EQ(status_history().back().text, "Message 11");
  Statusbar bar;
  set_status("A long one, with the advice at its end.");
  EXPECT_EQ(bar.get_tooltip_text().raw().rfind("A long one, with the advice at its end.", 0), 0u);
  const auto is_grey = [&bar] {
    return !gtk_widget_get_sensitive(gtk_statusbar_get_message_area(bar.gobj()));
  };
  EXPECT_FALSE(is_grey());
  clock.advance(61s);
  EXPECT_TRUE(is_grey());
  StatusNote trouble;
  trouble.show("The station is lost.");
  set_status("Saved.");
  EXPECT_EQ(status_history()[1].text, "The station is lost.");
  clear_status();
  clock.advance(61s);
  EXPECT_FALSE(is_grey());
  trouble.clear();
  StatusHistory::open();
  auto* window = find_window("Messages");
  ASSERT_TRUE(window);
  auto& list = get_widget<Gtk::TreeView>(*window, "Messages");
  set_status("The newest");
  Glib::ustring text;
  list.get_model()->children().begin()->get_value(1, text);
  EXPECT_EQ(text, "The newest");
  bool closed = false;
  window->signal_hide().connect([&closed] { closed = true; });
  press_key(*window, GDK_KEY_Escape);
  EXPECT_TRUE(closed);
}

TEST_F(StatusBarTest, a_throttle_tells_what_its_train_does_and_ctrl_w_closes_it) {
  auto* lok = layout().get_loks().add(new Lok);
  auto& throttle = LokController::open(lok);
  auto* station = add_booster();
  station->set_active(true);
  station->track_power_is_on();
  throttle.scale().set_value(60);
  EXPECT_EQ(throttle.speed_label().get_text(), "Wanted speed: 60");
  EXPECT_EQ(throttle.sentence().get_text(), "Drives at 60");
  lok->set_emergency_stop(true);
  EXPECT_EQ(throttle.sentence().get_text(), "Emergency stop: move the scale to drive on");
  EXPECT_EQ(throttle.speed_label().get_text(), "Wanted speed: 0");
  lok->set_speed(0);
  station->track_power_is_off();
  pulse();
  EXPECT_EQ(throttle.sentence().get_text(), "Track power is off");
  auto& second = LokController::open(lok);
  auto* first_window = dynamic_cast<Gtk::Window*>(throttle.get_toplevel());
  auto* second_window = dynamic_cast<Gtk::Window*>(second.get_toplevel());
  handle_events();
  int left = 0, top = 0, second_left = 0;
  first_window->get_position(left, top);
  second_window->get_position(second_left, top);
  EXPECT_GE(second_left, left + first_window->get_width());
  bool closed = false;
  first_window->signal_hide().connect([&closed] { closed = true; });
  press_key(*first_window, GDK_KEY_w, GDK_CONTROL_MASK);
  EXPECT_TRUE(closed);
  second_window->hide();
  handle_events();
}

}  // namespace
}  // namespace zemblar::test
