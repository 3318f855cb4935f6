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

/// The base of the main windows: from top to bottom the menu bar, the tool bar with the file
/// buttons, the content, and the status line with its marks. A click on the status line opens its
/// history. Make it with `new`; closing the window deletes it.
class LayoutWindow : public Gtk::Window {
 public:
  /// Brings all main windows to the front. False if there is none.
  static bool present_all();

 protected:
  explicit LayoutWindow(const Glib::ustring& title);

  /// Adds the content, which fills the remaining height, and the zoom items for `pages` to the
  /// menu. The canvas gets the focus; the present buttons of the tool bar can no longer get it.
  void set_content(Gtk::Widget& content, ViewPages& pages);

  /// The menu "View".
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
