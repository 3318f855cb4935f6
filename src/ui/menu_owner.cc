#include "ui/menu_owner.h"

namespace zemblar {
namespace {

constexpr auto ended_key = "zemblar-owner-ended";

GtkWidget* attach_window(GtkMenu* menu) {
  auto* widget = gtk_menu_get_attach_widget(menu);
  return widget ? gtk_widget_get_toplevel(widget) : nullptr;
}

}  // namespace

// A menu that is shown follows its owner as a transient window; one that is not may never have
// been, and assistive technology chooses from it all the same.
GtkWidget* owner_of_menu(GtkMenu* menu) {
  auto* window = gtk_widget_get_toplevel(GTK_WIDGET(menu));
  if (GTK_IS_WINDOW(window) && gtk_widget_get_mapped(GTK_WIDGET(menu))) {
    return GTK_WIDGET(gtk_window_get_transient_for(GTK_WINDOW(window)));
  }
  return g_object_get_data(G_OBJECT(menu), ended_key) ? nullptr : attach_window(menu);
}

void end_menus_of(GtkWidget* window) {
  auto* windows = gtk_window_list_toplevels();
  g_list_foreach(
      windows, [](gpointer next, gpointer) { g_object_ref(next); }, nullptr);
  for (auto* next = windows; next; next = next->next) {
    auto* menu = gtk_bin_get_child(GTK_BIN(next->data));
    if (!GTK_IS_MENU(menu) || owner_of_menu(GTK_MENU(menu)) != window) continue;
    g_object_set_data(G_OBJECT(menu), ended_key, window);
    gtk_menu_shell_deactivate(GTK_MENU_SHELL(menu));
  }
  g_list_free_full(windows, g_object_unref);
}

}  // namespace zemblar
