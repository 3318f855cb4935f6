#include "ui/windows/layout_window.h"

#include <glibmm/main.h>
#include <gtkmm/separatormenuitem.h>

#include "core/i18n.h"
#include "ui/status/status_history.h"
#include "ui/windows/file_menu.h"
#include "ui/windows/view_pages.h"

namespace zemblar {
namespace {

constexpr guint margin = 3;
constexpr unsigned retry_interval = 100;  // milliseconds

/// Prevents buttons from taking the focus, so that a key meant for the drawing does not activate
/// one, for example New. All tools are in the menus as well.
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
  add_status_line();
  add(rows_);
}

void LayoutWindow::add_status_line() {
  status_frame_.set_visible_window(false);
  status_frame_.add_events(Gdk::BUTTON_PRESS_MASK);
  status_frame_.signal_button_press_event().connect([](const GdkEventButton* event) {
    const bool is_click = event->type == GDK_BUTTON_PRESS && event->button == 1;
    if (is_click) StatusHistory::open();
    return is_click;
  });
  status_frame_.add(statusbar_);
  status_line_.pack_start(status_frame_, Gtk::PACK_EXPAND_WIDGET, margin);
  status_line_.pack_end(marks_, Gtk::PACK_SHRINK);
  rows_.pack_end(status_line_, Gtk::PACK_SHRINK);
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
  view_menu_->append(*Gtk::manage(new Gtk::SeparatorMenuItem));
  auto* messages = Gtk::manage(new Gtk::MenuItem(_("_Messages"), true));
  messages->signal_activate().connect(sigc::ptr_fun(StatusHistory::open));
  view_menu_->append(*messages);
  rows_.pack_start(content, Gtk::PACK_EXPAND_WIDGET);
  keep_focus_out(GTK_WIDGET(toolbar_.gobj()), nullptr);
  pages.take_free_focus();
}

void LayoutWindow::on_hide() {
  Gtk::Window::on_hide();
  end_soon();
}

// Deletes the window later, because the menu item that closes it is still being handled. Waits
// until no nested main loop is running: assistive technology can close a window behind its own
// dialog.
void LayoutWindow::end_soon() {
  Glib::signal_idle().connect_once([this] {
    if (g_main_depth() == 1) {
      delete this;
    } else {
      Glib::signal_timeout().connect_once([this] { end_soon(); }, retry_interval);
    }
  });
}

}  // namespace zemblar
