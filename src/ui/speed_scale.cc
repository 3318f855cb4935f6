#include "ui/speed_scale.h"

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

// The toolkit takes an upside-down scale for one that is turned about as well.
void SpeedScale::on_move_slider(Gtk::ScrollType scroll) {
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

// A train must not leap to the speed of the place that was hit. Where the theme has the primary
// button jump there, another button pages.
bool SpeedScale::on_button_press_event(GdkEventButton* event) {
  auto passed = *event;
  pages_ = event->button == 1 && primary_button_jumps(*this) && is_beside_slider(event->y);
  if (pages_) passed.button = 3;
  if (event->button == 2) return true;
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
