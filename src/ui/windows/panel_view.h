#pragma once

#include <gtkmm/alignment.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>

#include "core/object.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

class ViewObj;

/// Shows the properties panel of one object in a scrolled viewport, or else a text that says what
/// to do. The panel of an object that ends is gone before the object is.
class PanelView : public Gtk::ScrolledWindow {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant

  /// `hint` is shown while there is no object.
  explicit PanelView(const Glib::ustring& hint);
  ~PanelView() override;

  /// Null for none. Nothing happens when the object is shown already. With the diagram object that
  /// stands for it, how that is drawn comes first.
  void show_object(Object* object, ViewObj* drawn = nullptr);

 private:
  [[nodiscard]] Gtk::Widget* make_panel(Object& object, ViewObj* drawn);
  void put(Gtk::Widget& panel);
  void take_away();
  void say(const Glib::ustring& text);

  Glib::ustring hint_;
  Object* object_ = nullptr;
  const ViewObj* drawn_ = nullptr;  // only compared
  Gtk::Alignment frame_;
  Gtk::Label text_;
  ScopedConnection object_deleted_;
};

}  // namespace zemblar
