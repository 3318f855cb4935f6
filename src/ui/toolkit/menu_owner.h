#pragma once

#include <gtk/gtk.h>

namespace zemblar {

/// The window of the widget that a menu hangs on; null for none, and when that widget has gone.
[[nodiscard]] GtkWidget* owner_of_menu(GtkMenu* menu);

/// Closes all menus that hang on widgets in a window.
///
/// The menus of a file chooser's lists stay when these go, with the addresses of what they hung on.
void end_menus_of(GtkWidget* window);

}  // namespace zemblar
