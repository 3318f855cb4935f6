#pragma once

#include <gtkmm/box.h>
#include <gtkmm/entry.h>
#include <gtkmm/label.h>
#include <gtkmm/paned.h>

#include "ui/toolkit/bottom_tabs.h"
#include "ui/windows/object_list.h"
#include "ui/windows/panel_view.h"

namespace zemblar {

/// The right side of the editor. The page "Selected" shows the properties of the object that is
/// selected in the window. The page "All" shows the tree of all objects with a search field, and
/// below it the properties of the selected row.
class PropertiesPanel : public BottomTabs {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant

  PropertiesPanel();

  /// Sets the object of the page "Selected", or null.
  void show_object(Object* object, ViewObj* drawn = nullptr) {
    selected_.show_object(object, drawn);
  }
  /// Shows the page "All" and selects the object there.
  void reveal(Object& object);

 private:
  void build_filter(Gtk::Box& box);
  void find();
  bool on_filter_key(const GdkEventKey* event);

  PanelView selected_;
  Gtk::VPaned all_;
  Gtk::Entry filter_;
  Gtk::Label nothing_found_;
  ObjectList list_;
  PanelView listed_;
};

}  // namespace zemblar
