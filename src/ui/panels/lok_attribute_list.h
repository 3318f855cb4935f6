#pragma once

#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/cellrenderertext.h>
#include <gtkmm/treeview.h>

#include "ui/panels/lok_attribute_model.h"

namespace zemblar {

class Lok;

/// The attributes of a locomotive in a list. A new key is typed into the last row, a value into its
/// cell; Delete or the button below removes the selected attribute.
class LokAttributeList : public Gtk::VBox {
 public:
  explicit LokAttributeList(Lok& lok);

  [[nodiscard]] Gtk::TreeView& list() { return list_; }
  [[nodiscard]] Gtk::Button& remove_button() { return remove_; }

  /// Apply the text that the user has typed as a new key, or as the value of the row at `path`.
  void enter_key(const Glib::ustring& text);
  void enter_value(const Glib::ustring& path, const Glib::ustring& text);

 private:
  void add_columns();
  void on_key_editing(Gtk::CellEditable* editor, const Glib::ustring& path);
  void on_value_editing(Gtk::CellEditable* editor, const Glib::ustring& path);
  bool on_list_pressed(GdkEventButton* event);
  bool on_list_key(GdkEventKey* event);
  void remove_chosen();
  void choose_neighbour();
  void follow_selection();
  [[nodiscard]] Glib::ustring chosen_key();

  ObjectRef<Lok> lok_;
  Glib::RefPtr<LokAttributeModel> model_;
  Gtk::TreeView list_;
  Gtk::CellRendererText key_cell_;
  Gtk::CellRendererText value_cell_;
  Gtk::TreeViewColumn key_column_;
  Gtk::TreeViewColumn value_column_;
  Gtk::Button remove_;
};

}  // namespace zemblar
