#pragma once

#include <gtk/gtk.h>

namespace zemblar {

/// The window of the widget that a menu is attached to; null if there is none or the widget is
/// destroyed.
[[nodiscard]] GtkWidget* owner_of_menu(GtkMenu* menu);

/// Closes all menus attached to widgets in a window.
///
/// Needed because the menus of a file chooser's lists survive these lists, and keep the address of
/// the destroyed widget.
void end_menus_of(GtkWidget* window);

}  // namespace zemblar
