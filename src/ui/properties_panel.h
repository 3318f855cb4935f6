#pragma once

#include <gtkmm/notebook.h>
#include <gtkmm/paned.h>

#include "ui/object_list.h"
#include "ui/panel_view.h"

namespace zemblar {

/// The right side of the editor: "Selected" shows the properties of what the window works on,
/// "All" the tree of all objects and below it the properties of the selected row.
class PropertiesPanel : public Gtk::Notebook {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant

  PropertiesPanel();

  /// What the page "Selected" shows; null for nothing.
  void show_object(Object* object, ViewObj* drawn = nullptr) {
    selected_.show_object(object, drawn);
  }

 private:
  PanelView selected_;
  Gtk::VPaned all_;
  ObjectList list_;
  PanelView listed_;
};

}  // namespace zemblar
