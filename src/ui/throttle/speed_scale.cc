#include "ui/throttle/speed_scale.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/settings.h>

#include <cmath>

namespace zemblar {
namespace {

bool primary_button_jumps(const Gtk::Widget& scale) {
  gboolean jumps = FALSE;
  g_object_get(gtk_widget_get_settings(const_cast<GtkWidget*>(scale.gobj())),
               "gtk-primary-button-warps-slider", &jumps, nullptr);
  return jumps != FALSE;
}

}  // namespace

SpeedScale::SpeedScale(Gtk::Adjustment& speed) : Gtk::VScale(speed) {
  set_inverted();
  set_draw_value(false);
  signal_change_value().connect(sigc::mem_fun(*this, &SpeedScale::take_whole), false);
}

void SpeedScale::let_go() {
  const auto key = held_key_;
  if (has_grab()) {
    const bool had_focus = has_focus();
    set_sensitive(false);
    set_sensitive(true);
    if (had_focus) grab_focus();
  }
  held_key_ = ended_key_ = key;
}

// --- Keys ---

// Because the scale is inverted, the toolkit's Ctrl+Left would increase the speed.
bool SpeedScale::on_key_press_event(GdkEventKey* event) {
  if (event->hardware_keycode == ended_key_ && ended_key_ != 0) return true;
  held_key_ = event->hardware_keycode;
  ended_key_ = 0;
  const bool control = (event->state & GDK_CONTROL_MASK) != 0;
  const bool left = event->keyval == GDK_KEY_Left || event->keyval == GDK_KEY_KP_Left;
  const bool right = event->keyval == GDK_KEY_Right || event->keyval == GDK_KEY_KP_Right;
  if (!control || !(left || right)) return Gtk::VScale::on_key_press_event(event);
  on_move_slider(left ? Gtk::SCROLL_PAGE_DOWN : Gtk::SCROLL_PAGE_UP);
  return true;
}

bool SpeedScale::on_key_release_event(GdkEventKey* event) {
  if (event->hardware_keycode == held_key_) held_key_ = ended_key_ = 0;
  return Gtk::VScale::on_key_release_event(event);
}

bool SpeedScale::on_focus_out_event(GdkEventFocus* event) {
  held_key_ = ended_key_ = 0;
  return Gtk::VScale::on_focus_out_event(event);
}

// The toolkit also swaps left and right on an inverted scale, which is corrected here. The key End
// would jump to the highest speed and is next to the paging keys, so it is ignored.
void SpeedScale::on_move_slider(Gtk::ScrollType scroll) {
  if (scroll == Gtk::SCROLL_END) return;
  if (scroll == Gtk::SCROLL_STEP_LEFT) scroll = Gtk::SCROLL_STEP_DOWN;
  if (scroll == Gtk::SCROLL_STEP_RIGHT) scroll = Gtk::SCROLL_STEP_UP;
  Gtk::VScale::on_move_slider(scroll);
}

bool SpeedScale::take_whole(Gtk::ScrollType /*scroll*/, double value) {
  set_value(std::round(value));
  return true;
}

bool SpeedScale::is_beside_slider(double y) const {
  int start = 0;
  int end = 0;
  gtk_range_get_slider_range(const_cast<GtkRange*>(Gtk::Range::gobj()), &start, &end);
  return y < start || y >= end;
}

// --- The pointer ---

// A press must not make a train jump to the speed at the pointer. If the theme makes the primary
// button jump, the press is passed on as that of another button, which pages.
bool SpeedScale::on_button_press_event(GdkEventButton* event) {
  // During paging other buttons are ignored.
  const bool is_new = event->type == GDK_BUTTON_PRESS && event->button != 2;
  if (!is_new || (pages_ && event->button != 1)) return true;
  auto passed = *event;
  pages_ = event->button == 1 && primary_button_jumps(*this) && is_beside_slider(event->y);
  if (pages_) passed.button = 3;
  return Gtk::VScale::on_button_press_event(&passed);
}

bool SpeedScale::on_button_release_event(GdkEventButton* event) {
  auto passed = *event;
  if (pages_ && event->button == 1) {
    passed.button = 3;
    pages_ = false;
  }
  return Gtk::VScale::on_button_release_event(&passed);
}

}  // namespace zemblar
