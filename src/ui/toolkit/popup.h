#pragma once

#include <gdkmm/rectangle.h>
#include <glibmm/main.h>

#include <memory>

#include "runtime/scoped_connection.h"

namespace Gtk {
class Menu;
class Widget;
}  // namespace Gtk

namespace zemblar {

/// Pops up a menu under a button, at least as wide as the button, for the event that is being
/// handled. The caller keeps the menu. Returns whether it is shown: it cannot be while another
/// program holds the pointer.
bool popup_below(Gtk::Menu& menu, Gtk::Widget& button);
/// The same under a part of the screen.
bool popup_below(Gtk::Menu& menu, const Gdk::Rectangle& area);

/// Ends a menu or a window in the turn after it was hidden, when its choice has been made:
/// thousands of entries that follow their objects would cost much, and nobody sees them. `drop`
/// belongs to the owner of what is shown.
template <typename T>
void drop_when_hidden(std::unique_ptr<T>& shown, ScopedConnection& drop) {
  shown->signal_hide().connect([&shown, &drop] {
    drop = Glib::signal_idle().connect([&shown] {
      shown.reset();
      return false;
    });
  });
}

}  // namespace zemblar
