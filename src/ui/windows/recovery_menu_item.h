#pragma once

#include <gtkmm/menu.h>
#include <gtkmm/menuitem.h>

#include "runtime/scoped_connection.h"

namespace zemblar {

/// The item of the file menu that opens the entries of RecoveryCopy: unsaved work, and files that
/// Save As has replaced. Insensitive while there are none.
class RecoveryMenuItem : public Gtk::MenuItem {
 public:
  RecoveryMenuItem();

 private:
  void fill();

  ScopedConnection changed_;
};

}  // namespace zemblar
