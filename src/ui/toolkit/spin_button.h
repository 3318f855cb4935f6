#pragma once

#include <gtkmm/spinbutton.h>

#include "ui/toolkit/cell_editing.h"
#include "ui/toolkit/class.h"

namespace zemblar {

/// Edits a number, also as a cell of a tree.
///
/// In a cell too, the arrow keys change the number; those of the toolkit's spin button would end
/// the editing.
class SpinButton : public Gtk::SpinButton {
 public:
  explicit SpinButton(double climb_rate = 0, unsigned digits = 0);

 protected:
  void start_editing_vfunc(GdkEvent* event) override;

 private:
  CellEditing editing_{*this};
};

extern Class<SpinButton, Gtk::SpinButton, Gtk::CellEditable> SpinButton_Class;

}  // namespace zemblar
