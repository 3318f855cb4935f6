#include "ui/panels/lok_attribute_list.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/entry.h>
#include <gtkmm/scrolledwindow.h>

#include "core/i18n.h"
#include "core/string_pool.h"
#include "locomotives/lok.h"
#include "ui/toolkit/name_entry.h"

namespace zemblar {
namespace {

constexpr int gap = 6;

const LokAttributeModel::Columns& columns() {
  return LokAttributeModel::columns();
}

}  // namespace

LokAttributeList::LokAttributeList(Lok& lok)
    : Gtk::VBox(false, gap),
      lok_(&lok),
      model_(LokAttributeModel::create(lok)),
      list_(model_),
      key_column_(_("Attribute"), key_cell_),
      value_column_(_("Value"), value_cell_),
      remove_(_("Re_move Attribute"), true) {
  add_columns();
  list_.get_accessible()->set_name(_("Attributes"));
  list_.set_enable_search(false);
  list_.signal_button_press_event().connect(
      sigc::mem_fun(*this, &LokAttributeList::on_list_pressed), false);
  list_.signal_key_press_event().connect(sigc::mem_fun(*this, &LokAttributeList::on_list_key),
                                         false);
  list_.get_selection()->signal_changed().connect(
      sigc::mem_fun(*this, &LokAttributeList::follow_selection));
  remove_.signal_clicked().connect(sigc::mem_fun(*this, &LokAttributeList::remove_chosen));

  auto* frame = Gtk::manage(new Gtk::ScrolledWindow);
  frame->set_policy(Gtk::POLICY_AUTOMATIC, Gtk::POLICY_NEVER);
  frame->set_shadow_type(Gtk::SHADOW_IN);
  frame->add(list_);
  pack_start(*frame);
  auto* buttons = Gtk::manage(new Gtk::HBox(false, gap));
  buttons->pack_start(remove_, false, false);
  pack_start(*buttons, false, false);
  follow_selection();
}

void LokAttributeList::add_columns() {
  key_column_.add_attribute(key_cell_.property_text(), columns().key);
  key_column_.add_attribute(key_cell_.property_foreground(), columns().colour);
  key_column_.add_attribute(key_cell_.property_editable(), columns().placeholder);
  value_column_.add_attribute(value_cell_.property_text(), columns().value);
  value_column_.add_attribute(value_cell_.property_editable(), columns().real);
  for (auto* column : {&key_column_, &value_column_}) {
    column->set_resizable();
    column->set_expand();
    list_.append_column(*column);
  }
  key_cell_.signal_editing_started().connect(
      sigc::mem_fun(*this, &LokAttributeList::on_key_editing));
  value_cell_.signal_editing_started().connect(
      sigc::mem_fun(*this, &LokAttributeList::on_value_editing));
  key_cell_.signal_edited().connect(
      [this](const Glib::ustring&, const Glib::ustring& text) { enter_key(text); });
  value_cell_.signal_edited().connect(sigc::mem_fun(*this, &LokAttributeList::enter_value));
}

void LokAttributeList::enter_key(const Glib::ustring& text) {
  if (text.empty() || !lok_) return;
  if (!model_->find(text)) lok_->set_attribute(text, "");
  if (const auto row = model_->find(text)) {
    list_.set_cursor(model_->get_path(row), value_column_, true);
  }
}

void LokAttributeList::enter_value(const Glib::ustring& path, const Glib::ustring& text) {
  const auto row = model_->get_iter(path);
  if (!row || !lok_ || !(*row)[columns().real]) return;
  lok_->set_attribute((*row).get_value(columns().key), text);
}

void LokAttributeList::on_key_editing(Gtk::CellEditable* editor, const Glib::ustring&) {
  auto* entry = dynamic_cast<Gtk::Entry*>(editor);
  if (!entry) return;
  entry->set_text("");
  offer_strings(*entry, attribute_strings().get_all());
}

void LokAttributeList::on_value_editing(Gtk::CellEditable* editor, const Glib::ustring& path) {
  auto* entry = dynamic_cast<Gtk::Entry*>(editor);
  const auto row = model_->get_iter(path);
  if (entry && row) {
    offer_strings(*entry, attribute_strings().get_all((*row).get_value(columns().key)));
  }
}

// Makes the first press edit: the toolkit would only select the row with the first press, and edit
// with the second.
bool LokAttributeList::on_list_pressed(GdkEventButton* event) {
  Gtk::TreePath path;
  if (event->window == list_.get_bin_window()->gobj() &&
      list_.get_path_at_pos(static_cast<int>(event->x), static_cast<int>(event->y), path)) {
    list_.set_cursor(path);
  }
  return false;
}

bool LokAttributeList::on_list_key(GdkEventKey* event) {
  if (event->keyval != GDK_Delete || chosen_key().empty()) return false;
  remove_chosen();
  return true;
}

void LokAttributeList::remove_chosen() {
  const auto key = chosen_key();
  if (!lok_ || key.empty()) return;
  choose_neighbour();
  lok_->remove_attribute(key);
}

// Selects the attribute below the selected one, else the one above, else the row for a new one. So
// the remove button keeps the focus while there are attributes.
void LokAttributeList::choose_neighbour() {
  const auto row = list_.get_selection()->get_selected();
  auto neighbour = std::next(row);
  const bool is_last = (*neighbour)[columns().placeholder];
  if (is_last && row != model_->children().begin()) neighbour = std::prev(row);
  if (remove_.is_focus() && (*neighbour)[columns().placeholder]) list_.grab_focus();
  list_.set_cursor(model_->get_path(neighbour));
}

void LokAttributeList::follow_selection() {
  remove_.set_sensitive(!chosen_key().empty());
}

Glib::ustring LokAttributeList::chosen_key() {
  const auto row = list_.get_selection()->get_selected();
  return row && (*row)[columns().real] ? (*row).get_value(columns().key) : Glib::ustring();
}

}  // namespace zemblar
