#pragma once

#include <gtkmm/alignment.h>
#include <gtkmm/celleditable.h>

#include "ui/toolkit/cell_editing.h"
#include "ui/toolkit/class.h"

namespace zemblar {

/// Edits a cell of a tree with one widget, which may be smaller than the cell.
class ScriptAlignment : public Gtk::Alignment, public Gtk::CellEditable {
 public:
  /// Position of the widget in the free space, from 0 (left, top) to 1, and the fraction of the
  /// free space that it fills.
  explicit ScriptAlignment(float xalign = 0.5F, float yalign = 0.5F, float xscale = 1,
                           float yscale = 1);

 protected:
  void start_editing_vfunc(GdkEvent* event) override;
  void on_grab_focus() override;

 private:
  CellEditing editing_{*this};
};

extern Class<ScriptAlignment, Gtk::Alignment, Gtk::CellEditable> ScriptAlignment_Class;

}  // namespace zemblar
