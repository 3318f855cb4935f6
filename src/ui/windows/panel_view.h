#pragma once

#include <gtkmm/alignment.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>

#include "core/object.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

class ViewObj;

/// Shows the properties panel of one object in a scrolled viewport, or a text. When an object ends,
/// its panel is removed before that.
class PanelView : public Gtk::ScrolledWindow {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant

  /// `hint` is shown while there is no object.
  explicit PanelView(const Glib::ustring& hint);
  ~PanelView() override;

  /// Shows the panel of an object, or the hint for null. Does nothing if the object is shown
  /// already. If `drawn` is given, the properties of that diagram object come first.
  void show_object(Object* object, ViewObj* drawn = nullptr);

 private:
  [[nodiscard]] Gtk::Widget* make_panel(Object& object, ViewObj* drawn);
  void add_panel(Gtk::Widget& panel);
  void remove_panel();
  void show_text(const Glib::ustring& text);

  Glib::ustring hint_;
  Object* object_ = nullptr;
  const ViewObj* drawn_ = nullptr;  // only for comparison
  Gtk::Alignment frame_;
  Gtk::Label text_;
  ScopedConnection object_deleted_;
};

}  // namespace zemblar
