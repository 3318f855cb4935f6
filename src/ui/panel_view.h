#pragma once

#include <gtkmm/alignment.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>

#include "core/object.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

/// Shows the properties panel of one object in a scrolled viewport, or else a text that says what
/// to do. The panel of an object that ends is gone before the object is.
class PanelView : public Gtk::ScrolledWindow {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant

  /// `hint` is shown while there is no object.
  explicit PanelView(const Glib::ustring& hint);
  ~PanelView() override;

  /// Null for none. Nothing happens when the object is shown already.
  void show_object(Object* object);

 private:
  void put(Gtk::Widget& panel);
  void take_away();
  void say(const Glib::ustring& text);

  Glib::ustring hint_;
  Object* object_ = nullptr;
  Gtk::Alignment frame_;
  Gtk::Label text_;
  ScopedConnection object_deleted_;
};

}  // namespace zemblar
