#pragma once

#include <gtkmm/menu.h>
#include <gtkmm/statusicon.h>

#include "core/layout.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"

namespace zemblar {

/// The status icon with the program's menu: how a program without windows is reached.
///
/// Open, Save and Save As act on the layout that is current when the menu is built, and can no
/// longer be chosen when that one has been replaced. New is there for the shape of the menu.
class Tray {
 public:
  explicit Tray(Layout& layout);

  /// Some seconds from now the status line says so if the desktop shows no status icons.
  void watch_for_a_place();

 private:
  void append_document_items(Layout& layout);

  Gtk::Menu menu_;
  Glib::RefPtr<Gtk::StatusIcon> icon_;
  ScopedConnection layout_ended_;
  Timeout look_;
};

}  // namespace zemblar
