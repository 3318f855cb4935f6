#pragma once

#include <gtkmm/celleditable.h>
#include <gtkmm/combobox.h>
#include <gtkmm/liststore.h>

#include "ui/toolkit/cell_editing.h"
#include "ui/toolkit/class.h"

namespace zemblar {

/// A choice of texts, also as a cell of a tree. With an entry, any other text can be typed.
///
/// In a cell, a list without an entry opens at once; choosing ends the editing, and closing the
/// list cancels it. The toolkit's combo box does this itself, but gtkmm's class does not derive
/// from Gtk::CellEditable.
class ComboBoxText : public Gtk::ComboBox, public Gtk::CellEditable {
 public:
  explicit ComboBoxText(bool has_entry = false);

  void append(const Glib::ustring& text);
  void remove_all() { texts_->clear(); }
  /// The chosen or typed text; empty if there is none.
  [[nodiscard]] Glib::ustring get_text() const;
  /// Without an entry, selects the text if it is in the list, else nothing.
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
