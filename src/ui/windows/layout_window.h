#pragma once

#include <gtkmm/box.h>
#include <gtkmm/eventbox.h>
#include <gtkmm/menu.h>
#include <gtkmm/menubar.h>
#include <gtkmm/toolbar.h>
#include <gtkmm/window.h>

#include "ui/status/statusbar.h"
#include "ui/windows/status_marks.h"

namespace zemblar {

class ViewPages;

/// What the main windows have in common: menu bar, tool bar with the file buttons, content, and the
/// status line with its marks, from top to bottom. A click on the line shows earlier messages.
/// Closing it, by whatever way, deletes it; made with `new`.
class LayoutWindow : public Gtk::Window {
 public:
  /// Brings all of them before other windows. False when there is none.
  static bool present_all();

 protected:
  explicit LayoutWindow(const Glib::ustring& title);

  /// Take all spare height, and can be zoomed by the menu. The canvas gets the focus, and the
  /// buttons that are in the tool bar by then no more do.
  void set_content(Gtk::Widget& content, ViewPages& pages);

  /// Under "View".
  [[nodiscard]] Gtk::Menu& view_menu() { return *view_menu_; }

  Gtk::MenuBar menu_bar_;
  Gtk::Toolbar toolbar_;

 private:
  void on_hide() override;
  void end_soon();
  void add_status_line();

  Gtk::VBox rows_;
  Gtk::Menu* view_menu_;  // in the menu bar
  Gtk::HBox status_line_;
  Gtk::EventBox status_frame_;  // takes the clicks
  Statusbar statusbar_;
  StatusMarks marks_;
};

}  // namespace zemblar
