#include "ui/layout_window.h"

#include <glibmm/main.h>
#include <gtkmm/separatormenuitem.h>

#include "ui/file_menu.h"
#include "ui/view_pages.h"

namespace zemblar {
namespace {

/// A key that is meant for the drawing must not start an empty layout. All tools have entries in
/// the menus as well.
void keep_focus_out(GtkWidget* widget, gpointer unused) {
  if (GTK_IS_BUTTON(widget)) gtk_widget_set_can_focus(widget, FALSE);
  if (GTK_IS_CONTAINER(widget))
    gtk_container_forall(GTK_CONTAINER(widget), &keep_focus_out, unused);
}

}  // namespace

LayoutWindow::LayoutWindow(const Glib::ustring& title) {
  set_title(title);
  append_file_menu(menu_bar_, *this);
  view_menu_ = &append_view_menu(menu_bar_, *this);
  append_file_buttons(toolbar_);
  rows_.pack_start(menu_bar_, Gtk::PACK_SHRINK);
  rows_.pack_start(toolbar_, Gtk::PACK_SHRINK);
  rows_.pack_end(statusbar_, Gtk::PACK_SHRINK);
  add(rows_);
}

bool LayoutWindow::present_all() {
  bool found = false;
  for (auto* window : Gtk::Window::list_toplevels()) {
    if (!dynamic_cast<LayoutWindow*>(window) || !window->get_visible()) continue;
    window->present();
    found = true;
  }
  return found;
}

void LayoutWindow::set_content(Gtk::Widget& content, ViewPages& pages) {
  view_menu_->append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  pages.append_zoom_items(*view_menu_, get_accel_group());
  rows_.pack_start(content, Gtk::PACK_EXPAND_WIDGET);
  keep_focus_out(GTK_WIDGET(toolbar_.gobj()), nullptr);
  pages.take_free_focus();
}

// Deleted in the next turn: the menu entry that closes the window is still being served.
void LayoutWindow::on_hide() {
  Gtk::Window::on_hide();
  Glib::signal_idle().connect_once([this] { delete this; });
}

}  // namespace zemblar
