#include "ui/toolkit/form.h"

#include <gtkmm/entry.h>
#include <gtkmm/label.h>
#include <gtkmm/spinbutton.h>

#include <cmath>

namespace zemblar {
namespace {

constexpr int row_gap = 6;
constexpr int column_gap = 8;
constexpr int heading_gap = 8;

}  // namespace

Form::Form(const Labels& labels)
    : Gtk::VBox(false, row_gap),
      labels_(labels ? labels : Gtk::SizeGroup::create(Gtk::SIZE_GROUP_HORIZONTAL)) {
  set_border_width(row_gap);
}

void Form::add_row(const Glib::ustring& label, Gtk::Widget& field) {
  pack_row(label, field, field);
}

void Form::add_row(const Glib::ustring& label, Gtk::Widget& field, const Glib::ustring& unit) {
  add_row(label, field, *Gtk::manage(new Gtk::Label(unit)));
}

void Form::add_row(const Glib::ustring& label, Gtk::Widget& field, Gtk::Widget& behind) {
  auto* both = Gtk::manage(new Gtk::HBox(false, column_gap));
  both->pack_start(field, false, false);
  both->pack_start(behind, false, false);
  pack_row(label, field, *both);
}

void Form::pack_row(const Glib::ustring& label, Gtk::Widget& mnemonic, Gtk::Widget& field) {
  auto* text = Gtk::manage(new Gtk::Label(label, true));
  text->set_alignment(0, 0.5);
  text->set_mnemonic_widget(mnemonic);
  labels_->add_widget(*text);
  auto* row = Gtk::manage(new Gtk::HBox(false, column_gap));
  row->pack_start(*text, false, false);
  row->pack_start(field, true, true);
  pack_start(*row, false, false);
}

void Form::add_field(Gtk::Widget& field) {
  auto* nothing = Gtk::manage(new Gtk::Label);
  labels_->add_widget(*nothing);
  auto* row = Gtk::manage(new Gtk::HBox(false, column_gap));
  row->pack_start(*nothing, false, false);
  row->pack_start(field, true, true);
  pack_start(*row, false, false);
}

Gtk::Label& Form::add_heading(const Glib::ustring& markup) {
  auto* heading = Gtk::manage(new Gtk::Label);
  heading->set_markup(markup);
  heading->set_alignment(0, 1);
  heading->set_padding(0, heading_gap / 2);
  pack_start(*heading, false, false);
  return *heading;
}

void Form::show_row(Gtk::Widget& field, bool visible) {
  auto* row = &field;
  while (row->get_parent() != this) row = row->get_parent();
  row->set_no_show_all(!visible);
  // The children of a row that was hidden when the form was shown are hidden as well.
  visible ? row->show_all() : row->hide();
}

void Form::add_wide(Gtk::Widget& widget) {
  pack_start(widget, false, false);
}

void show_value(Gtk::SpinButton& spin, double value) {
  if (std::abs(spin.get_value() - value) > 1e-9) spin.set_value(value);
}

bool shows_value(const Gtk::SpinButton& spin, double value) {
  const double last_digit = std::pow(10.0, -static_cast<double>(spin.get_digits()));
  return std::abs(spin.get_value() - value) <= last_digit / 2;
}

void show_active(Gtk::ToggleButton& button, bool active) {
  if (button.get_active() != active) button.set_active(active);
}

void show_text(Gtk::Entry& entry, const Glib::ustring& text) {
  if (entry.get_text().raw() != text.raw()) entry.set_text(text);
}

}  // namespace zemblar
