#pragma once

#include <gtkmm/celleditable.h>
#include <gtkmm/combobox.h>
#include <gtkmm/liststore.h>

#include "ui/toolkit/cell_editing.h"
#include "ui/toolkit/class.h"

namespace zemblar {

/// A choice of texts, also as a cell of a tree. With an entry, any other text can be typed.
///
/// In a cell, a list without an entry opens at once; to choose ends the editing, and to close the
/// list cancels it. The toolkit's combo box does so already, although gtkmm does not say in its
/// type that it edits cells.
class ComboBoxText : public Gtk::ComboBox, public Gtk::CellEditable {
 public:
  explicit ComboBoxText(bool has_entry = false);

  void append(const Glib::ustring& text);
  /// What is chosen or typed; empty when nothing is.
  [[nodiscard]] Glib::ustring get_text() const;
  /// Without an entry, chooses the text if it is offered and else nothing.
  void set_text(const Glib::ustring& text);

 protected:
  void on_parent_changed(Gtk::Widget* previous_parent) override;

 private:
  struct Columns : Gtk::TreeModelColumnRecord {
    Columns() { add(text); }
    Gtk::TreeModelColumn<Glib::ustring> text;
  };

  Columns columns_;
  Glib::RefPtr<Gtk::ListStore> texts_ = Gtk::ListStore::create(columns_);
  CellEditing editing_{*this};
};

extern Class<ComboBoxText, Gtk::ComboBox> ComboBoxText_Class;

}  // namespace zemblar
