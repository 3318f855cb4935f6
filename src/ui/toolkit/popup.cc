#include "ui/toolkit/popup.h"

#include <gdkmm/screen.h>
#include <gdkmm/window.h>
#include <gtkmm/checkmenuitem.h>
#include <gtkmm/menu.h>

#include <algorithm>

namespace zemblar {
namespace {

Gdk::Rectangle area_on_screen(Gtk::Widget& widget) {
  int x = 0;
  int y = 0;
  widget.get_window()->get_origin(x, y);
  auto area = widget.get_allocation();
  if (widget.get_has_window()) area = {0, 0, area.get_width(), area.get_height()};
  return {x + area.get_x(), y + area.get_y(), area.get_width(), area.get_height()};
}

void place_below(Gtk::Menu& menu, const Gdk::Rectangle& area, int& x, int& y) {
  const auto size = menu.size_request();
  const auto screen = menu.get_screen();
  const int below = area.get_y() + area.get_height();
  const bool fits_below = below + size.height <= screen->get_height();
  x = std::max(0, std::min(area.get_x(), screen->get_width() - size.width));
  y = std::max(0, fits_below ? below : area.get_y() - size.height);
}

/// Selects the marked entry, so that Return changes nothing, or else the first one.
void select_chosen(Gtk::Menu& menu) {
  for (auto& item : menu.items()) {
    const auto* marked = dynamic_cast<const Gtk::CheckMenuItem*>(&item);
    if (marked && marked->get_active()) return menu.select_item(item);
  }
  menu.select_first();
}

}  // namespace

bool popup_below(Gtk::Menu& menu, Gtk::Widget& button) {
  menu.set_size_request(-1, -1);
  const int natural = menu.size_request().width;
  menu.set_size_request(std::max(natural, button.get_allocation().get_width()), -1);
  return popup_below(menu, area_on_screen(button));
}

// Selects an entry only if the menu is shown, because a menu with a selected entry gets all input
// even when hidden.
bool popup_below(Gtk::Menu& menu, const Gdk::Rectangle& area) {
  menu.popup(
      [&menu, area](int& x, int& y, bool& push_in) {
        place_below(menu, area, x, y);
        push_in = true;
      },
      0, gtk_get_current_event_time());
  if (!menu.get_mapped()) return false;
  select_chosen(menu);
  return true;
}

}  // namespace zemblar
