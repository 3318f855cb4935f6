#pragma once

#include <gtkmm/menushell.h>

namespace zemblar {

/// Appends the items that choose the grid of drawings. All such menus show the same choice.
void append_grid_menu(Gtk::MenuShell& menu);

}  // namespace zemblar
