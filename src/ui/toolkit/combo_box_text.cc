#include "ui/toolkit/combo_box_text.h"

#include <gtkmm/entry.h>
#include <gtkmm/private/combobox_p.h>
#include <gtkmm/treeview.h>

namespace zemblar {

constinit Class<ComboBoxText, Gtk::ComboBox> ComboBoxText_Class("ComboBoxText");

ComboBoxText::ComboBoxText(bool has_entry)
    : Gtk::ComboBox(Glib::ConstructParams(ComboBoxText_Class.init(), "has-entry",
                                          gboolean{has_entry}, nullptr)) {
  set_model(texts_);
  if (has_entry) {
    set_entry_text_column(columns_.text);
  } else {
    pack_start(columns_.text);
  }
}

void ComboBoxText::append(const Glib::ustring& text) {
  (*texts_->append())[columns_.text] = text;
}

Glib::ustring ComboBoxText::get_text() const {
  if (const auto* entry = get_entry()) return entry->get_text();
  const auto chosen = get_active();
  return chosen ? (*chosen)[columns_.text] : Glib::ustring();
}

void ComboBoxText::set_text(const Glib::ustring& text) {
  if (auto* entry = get_entry()) {
    entry->set_text(text);
    return;
  }
  unset_active();
  for (const auto& row : texts_->children()) {
    if (row.get_value(columns_.text).raw() == text.raw()) set_active(row);
  }
}

// Only the toolkit's combo box is notified when editing starts. A tree adopts only editors,
// immediately before that, so being added to a tree means the start.
void ComboBoxText::on_parent_changed(Gtk::Widget* previous_parent) {
  Gtk::ComboBox::on_parent_changed(previous_parent);
  if (dynamic_cast<Gtk::TreeView*>(get_parent())) editing_.start();
}

}  // namespace zemblar
