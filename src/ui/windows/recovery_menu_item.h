#pragma once

#include <gtkmm/menu.h>
#include <gtkmm/menuitem.h>

#include "runtime/scoped_connection.h"

namespace zemblar {

/// The entry of the file menu that opens what has been kept besides layout files: work that was
/// not saved, and what Save As has replaced. Insensitive while there is nothing.
class RecoveryMenuItem : public Gtk::MenuItem {
 public:
  RecoveryMenuItem();

 private:
  void fill();

  ScopedConnection changed_;
};

}  // namespace zemblar
