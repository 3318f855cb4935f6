#include "ui/toolkit/menu_grab.h"

#include <gtk/gtk.h>

namespace zemblar {
namespace {

/// True if the menu and all its parent menus are on the screen.
bool is_shown(GtkWidget* menu) {
  for (; GTK_IS_MENU(menu); menu = GTK_MENU_SHELL(menu)->parent_menu_shell) {
    if (!gtk_widget_get_mapped(menu)) return false;
  }
  return true;
}

}  // namespace

void release_hidden_menu() {
  for (auto* taker = gtk_grab_get_current(); GTK_IS_MENU(taker) && !is_shown(taker);) {
    gtk_menu_shell_deactivate(GTK_MENU_SHELL(taker));
    if (gtk_grab_get_current() == taker) gtk_grab_remove(taker);
    taker = gtk_grab_get_current();
  }
}

}  // namespace zemblar
