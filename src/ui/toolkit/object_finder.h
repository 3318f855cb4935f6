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

/// A small window in which one of many objects is found by typing a part of its name.
///
/// Return and a click choose, Escape, New and another layout close it. The objects are those
/// of the moment; one that ends leaves the list. `chosen` gets null for the row that chooses
/// nothing, and is called once at most, after the window has been hidden.
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
  void drop(const Object& ending);
  void append(Object* object, const Glib::ustring& name, const Glib::ustring& where);
  void move_cursor(int rows);
  void choose();
  void choose_soon();

  ObjectChoices choices_;
  ObjectMenuBase::Chosen chosen_;
  bool with_none_;
  bool over_ = false;  // the document that it was for has gone
  Gtk::Entry text_;
  Gtk::TreeView list_;
  Glib::RefPtr<Gtk::ListStore> rows_;
  std::unique_ptr<LayoutFollower> follower_;
  Timeout choose_soon_;
};

}  // namespace zemblar
