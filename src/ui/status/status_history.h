#pragma once

#include <gtkmm/liststore.h>
#include <gtkmm/treeview.h>
#include <gtkmm/window.h>

namespace zemblar {

/// A window with the history of the status line, with times, the newest entry first. It is updated
/// while it is open. Escape and Ctrl+W close it, which deletes it.
class StatusHistory : public Gtk::Window {
 public:
  /// Opens the one window, or brings it to the front.
  static void open();

 private:
  StatusHistory();
  bool on_key_press_event(GdkEventKey* event) override;
  void on_hide() override;
  void refresh();

  Glib::RefPtr<Gtk::ListStore> rows_;
  unsigned long newest_ = 0;  // the number of the entry in the first row
  Gtk::TreeView list_;
};

}  // namespace zemblar
