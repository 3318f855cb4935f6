#pragma once

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/liststore.h>
#include <gtkmm/treeview.h>

#include <map>

#include "ui/toolkit/object_ref.h"

namespace zemblar {

class Function;
class Lok;

/// A list of the functions of a locomotive, by number and name, with buttons to add and delete one.
class FunctionList : public Gtk::VBox {
 public:
  explicit FunctionList(Lok& lok);

  [[nodiscard]] Gtk::TreeView& list() { return list_; }
  [[nodiscard]] Gtk::Button& new_button() { return new_; }
  [[nodiscard]] Gtk::Button& delete_button() { return delete_; }

 private:
  struct Columns : Gtk::TreeModelColumnRecord {
    Columns() {
      add(number);
      add(name);
      add(function);
    }
    Gtk::TreeModelColumn<unsigned> number;
    Gtk::TreeModelColumn<Glib::ustring> name;
    Gtk::TreeModelColumn<Function*> function;
  };
  struct Connections {
    ScopedConnection renamed;
    ScopedConnection renumbered;
  };

  void build();
  void insert(zemblar::Object* child);
  void place(zemblar::Object* child);
  void remove(zemblar::Object* child);
  void follow(Function* function);
  void on_new();
  void on_delete();
  void choose_neighbour();
  void on_name_edited(const Glib::ustring& path, const Glib::ustring& text);
  [[nodiscard]] Gtk::TreeModel::iterator find(const zemblar::Object* function);
  [[nodiscard]] Function* chosen();

  ObjectRef<Lok> lok_;
  Columns columns_;
  Glib::RefPtr<Gtk::ListStore> model_{Gtk::ListStore::create(columns_)};
  Gtk::TreeView list_{model_};
  Gtk::Button new_;
  Gtk::Button delete_;
  std::map<const zemblar::Object*, Connections> connections_;
  ScopedConnection child_added_;
  ScopedConnection child_removed_;
  ScopedConnection child_moved_;
};

}  // namespace zemblar
