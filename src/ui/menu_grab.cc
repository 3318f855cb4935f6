#include "ui/menu_grab.h"

#include <gtk/gtk.h>

namespace zemblar {

void release_hidden_menu() {
  auto* taker = gtk_grab_get_current();
  if (!GTK_IS_MENU(taker) || gtk_widget_get_mapped(taker)) return;
  gtk_menu_shell_deactivate(GTK_MENU_SHELL(taker));
}

}  // namespace zemblar
