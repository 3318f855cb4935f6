#pragma once

#include <gdkmm/rectangle.h>

namespace Gtk {
class Menu;
class Widget;
}  // namespace Gtk

namespace zemblar {

/// Pops up a menu under a button, at least as wide as the button, for the event that is being
/// handled. The caller keeps the menu.
void popup_below(Gtk::Menu& menu, Gtk::Widget& button);
/// The same under a part of the screen.
void popup_below(Gtk::Menu& menu, const Gdk::Rectangle& area);

}  // namespace zemblar
