#pragma once

#include <gtkmm/liststore.h>
#include <gtkmm/treeview.h>
#include <gtkmm/window.h>

namespace zemblar {

/// A window with what the status line has told, each with its time, the newest first. It goes on
/// with what is told while it is open; Escape and Ctrl+W close it. Deleted when it is closed.
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
