#pragma once

#include <gtkmm/menu.h>
#include <gtkmm/statusicon.h>

#include "core/layout.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"

namespace zemblar {

/// The status icon with the program's menu, for use when no window is open.
///
/// Open, Save and Save As act on the layout that is current when the menu is built, and become
/// insensitive when that layout is replaced. New is always insensitive.
class Tray {
 public:
  explicit Tray(Layout& layout);

  /// Checks after some seconds whether the desktop shows the icon; if not, the status line says so.
  void check_place_later();

 private:
  void append_document_items(Layout& layout);

  Gtk::Menu menu_;
  Glib::RefPtr<Gtk::StatusIcon> icon_;
  ScopedConnection layout_ended_;
  Timeout place_check_;
};

}  // namespace zemblar
