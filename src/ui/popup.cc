#include "ui/popup.h"

#include <gdkmm/screen.h>
#include <gdkmm/window.h>
#include <gtkmm/menu.h>

#include <algorithm>

namespace zemblar {
namespace {

void place_below(Gtk::Menu& menu, Gtk::Widget& button, int& x, int& y) {
  button.get_window()->get_origin(x, y);
  const auto area = button.get_allocation();
  if (!button.get_has_window()) {
    x += area.get_x();
    y += area.get_y();
  }
  const auto size = menu.size_request();
  const auto screen = button.get_screen();
  const bool fits_below = y + area.get_height() + size.height <= screen->get_height();
  y += fits_below ? area.get_height() : -size.height;
  x = std::max(0, std::min(x, screen->get_width() - size.width));
  y = std::max(0, y);
}

}  // namespace

void popup_below(Gtk::Menu& menu, Gtk::Widget& button) {
  menu.set_size_request(-1, -1);
  const int natural = menu.size_request().width;
  menu.set_size_request(std::max(natural, button.get_allocation().get_width()), -1);
  menu.popup(
      [&menu, &button](int& x, int& y, bool& push_in) {
        place_below(menu, button, x, y);
        push_in = true;
      },
      0, gtk_get_current_event_time());
  menu.select_first();
}

}  // namespace zemblar
