#pragma once

#include <gtkmm/entry.h>
#include <gtkmm/liststore.h>
#include <gtkmm/treeview.h>
#include <gtkmm/window.h>

#include <memory>

#include "runtime/timer.h"
#include "ui/toolkit/layout_follower.h"
#include "ui/toolkit/object_menu.h"

namespace zemblar {

/// A small window to choose one of many objects by typing a part of its name.
///
/// Return and a click choose. Escape, New and opening another layout close the window. The list
/// follows the layout: an object that ends is removed. `chosen` is called at most once, after the
/// window has been hidden, with null for the row that chooses nothing.
class ObjectFinder : public Gtk::Window {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  ObjectFinder(ObjectChoices choices, ObjectMenuBase::Chosen chosen, bool with_none);
  ~ObjectFinder() override;

 protected:
  bool on_key_press_event(GdkEventKey* event) override;

 private:
  void build();
  void fill();
  void on_changed(const Object& object);
  void refill();
  void fill_from(Object& container, const std::string& text);
  void remove_rows_of(const Object& ending);
  void append(Object* object, const Glib::ustring& name, const Glib::ustring& where);
  void move_cursor(int rows);
  void choose();
  void choose_soon();

  ObjectChoices choices_;
  ObjectMenuBase::Chosen chosen_;
  bool with_none_;
  bool document_replaced_ = false;  // the document has been emptied or replaced
  Gtk::Entry text_;
  Gtk::TreeView list_;
  Glib::RefPtr<Gtk::ListStore> rows_;
  std::unique_ptr<LayoutFollower> follower_;
  Timeout choose_soon_;
};

}  // namespace zemblar
