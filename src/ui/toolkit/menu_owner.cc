#include "ui/toolkit/menu_owner.h"

#include <vector>

namespace zemblar {
namespace {

/// Visits a widget and all its descendants, including internal children.
template <typename Visit>
void for_each_widget(GtkWidget* widget, const Visit& visit) {
  visit(widget);
  if (!GTK_IS_CONTAINER(widget)) return;
  gtk_container_forall(
      GTK_CONTAINER(widget),
      [](GtkWidget* child, gpointer data) {
        for_each_widget(child, *static_cast<const Visit*>(data));
      },
      const_cast<Visit*>(&visit));
}

template <typename Visit>
void for_each_window(const Visit& visit) {
  auto* windows = gtk_window_list_toplevels();
  for (auto* next = windows; next; next = next->next) visit(GTK_WIDGET(next->data));
  g_list_free(windows);
}

// Searches all windows for the widget, because a menu keeps the address of its attach widget even
// when that is destroyed. An existing widget knows its menus.
GtkWidget* attach_window(const GtkMenu* menu) {
  GtkWidget* found = nullptr;
  for_each_window([&](GtkWidget* window) {
    for_each_widget(window, [&](GtkWidget* widget) {
      if (g_list_find(gtk_menu_get_for_attach_widget(widget), menu)) found = window;
    });
  });
  return found;
}

/// The window that a shown menu is transient for; null for a hidden menu.
GtkWidget* shown_over(GtkMenu* menu) {
  auto* window = gtk_widget_get_toplevel(GTK_WIDGET(menu));
  if (!GTK_IS_WINDOW(window) || !gtk_widget_get_mapped(GTK_WIDGET(menu))) return nullptr;
  return GTK_WIDGET(gtk_window_get_transient_for(GTK_WINDOW(window)));
}

std::vector<GtkMenu*> menus_of(GtkWidget* window) {
  std::vector<GtkMenu*> menus;
  for_each_widget(window, [&](GtkWidget* widget) {
    for (auto* next = gtk_menu_get_for_attach_widget(widget); next; next = next->next) {
      menus.push_back(GTK_MENU(next->data));
    }
  });
  for_each_window([&](GtkWidget* other) {
    auto* menu = gtk_bin_get_child(GTK_BIN(other));
    if (GTK_IS_MENU(menu) && shown_over(GTK_MENU(menu)) == window) menus.push_back(GTK_MENU(menu));
  });
  return menus;
}

}  // namespace

// The window of a shown menu is transient for the owner. A hidden menu may never have been shown,
// yet assistive technology can choose from it.
GtkWidget* owner_of_menu(GtkMenu* menu) {
  if (gtk_widget_get_mapped(GTK_WIDGET(menu))) return shown_over(menu);
  return attach_window(menu);
}

void end_menus_of(GtkWidget* window) {
  const auto menus = menus_of(window);
  for (auto* menu : menus) g_object_ref(menu);
  for (auto* menu : menus) {
    gtk_menu_shell_deactivate(GTK_MENU_SHELL(menu));
    g_object_unref(menu);
  }
}

}  // namespace zemblar
