#pragma once

#include <gtkmm/box.h>
#include <gtkmm/celleditable.h>

#include "ui/toolkit/cell_editing.h"
#include "ui/toolkit/class.h"

namespace zemblar {

/// Edits a cell of a tree with several widgets side by side.
class ScriptHBox : public Gtk::HBox, public Gtk::CellEditable {
 public:
  /// `spacing` in pixels.
  explicit ScriptHBox(bool homogeneous = false, int spacing = 0);

 protected:
  void start_editing_vfunc(GdkEvent* event) override;
  void on_grab_focus() override;

 private:
  CellEditing editing_{*this};
};

extern Class<ScriptHBox, Gtk::HBox, Gtk::CellEditable> ScriptHBox_Class;

}  // namespace zemblar
