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

/// Shows a menu below a button, at least as wide as the button, for the present event. The caller
/// owns the menu. False if the menu could not be shown, because another program has grabbed the
/// pointer.
bool popup_below(Gtk::Menu& menu, Gtk::Widget& button);
/// The same below an area of the screen.
bool popup_below(Gtk::Menu& menu, const Gdk::Rectangle& area);

/// Destroys a menu or a window in the iteration of the main loop after it was hidden, when its
/// handlers have run. Otherwise thousands of invisible entries would keep following their objects.
/// `drop` is a member of the owner of `shown`.
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
