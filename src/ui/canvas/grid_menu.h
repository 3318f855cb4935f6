#pragma once

#include <gtkmm/menushell.h>

namespace zemblar {

/// Appends the choice of the grid that drawings keep to. All such menus show the same choice.
void append_grid_menu(Gtk::MenuShell& menu);

}  // namespace zemblar
