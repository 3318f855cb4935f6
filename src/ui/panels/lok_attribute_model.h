#pragma once

#include <gtkmm/liststore.h>

#include "runtime/scoped_connection.h"
#include "ui/toolkit/object_ref.h"

namespace zemblar {

class Lok;

/// The attributes of a locomotive as a list model, sorted by key, with a grey last row for a new
/// one. It is kept equal to the locomotive's attributes.
class LokAttributeModel : public Gtk::ListStore {
 public:
  struct Columns : Gtk::TreeModelColumnRecord {
    Columns() {
      add(key);
      add(value);
      add(placeholder);
      add(real);
      add(colour);
    }
    Gtk::TreeModelColumn<Glib::ustring> key;
    Gtk::TreeModelColumn<Glib::ustring> value;
    Gtk::TreeModelColumn<bool> placeholder;  ///< the last row
    Gtk::TreeModelColumn<bool> real;         ///< any other row
    Gtk::TreeModelColumn<Glib::ustring> colour;
  };

  static const Columns& columns();
  static Glib::RefPtr<LokAttributeModel> create(Lok& lok);

  /// The row of a key, or null.
  [[nodiscard]] Gtk::TreeModel::iterator find(const Glib::ustring& key);

 protected:
  explicit LokAttributeModel(Lok& lok);

 private:
  void follow(const Glib::ustring& key);
  /// The row before which a key belongs.
  Gtk::TreeModel::iterator successor(const Glib::ustring& key);
  void insert_row(const Gtk::TreeModel::iterator& before, const std::string& key,
                  const std::string& value);

  ObjectRef<Lok> lok_;
  ScopedConnection changed_;
};

}  // namespace zemblar
