#pragma once

#include <gtkmm/box.h>
#include <gtkmm/sizegroup.h>

#include "core/panel_factory.h"

namespace Gtk {
class CheckButton;
class Entry;
class Label;
class SpinButton;
class ToggleButton;
}  // namespace Gtk

namespace zemblar {

/// The base of a property panel: rows, each with a label and a field.
///
/// All labels are in one size group, which the panels of a window share, so that the fields of all
/// panels align. A label's access key activates its field.
class Form : public Gtk::VBox {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  using Labels = Glib::RefPtr<Gtk::SizeGroup>;

  /// `labels` may be null; the form then has a size group of its own.
  explicit Form(const Labels& labels);

  /// In `label` an underscore marks the access key. With a unit, or another widget behind it, the
  /// field keeps its natural width.
  void add_row(const Glib::ustring& label, Gtk::Widget& field);
  void add_row(const Glib::ustring& label, Gtk::Widget& field, const Glib::ustring& unit);
  void add_row(const Glib::ustring& label, Gtk::Widget& field, Gtk::Widget& behind);
  /// Adds a field without a label, aligned with the other fields.
  void add_field(Gtk::Widget& field);
  /// Adds a heading in Pango markup, with some space above.
  Gtk::Label& add_heading(const Glib::ustring& markup);
  /// Shows or hides the row that contains a field or a part of a field.
  void show_row(Gtk::Widget& field, bool visible);
  /// Adds a widget over the whole width.
  void add_wide(Gtk::Widget& widget);

  [[nodiscard]] const Labels& labels() const { return labels_; }

 private:
  void pack_row(const Glib::ustring& label, Gtk::Widget& mnemonic, Gtk::Widget& field);

  Labels labels_;
};

/// These show a value in a widget, without touching the typed text if the value is the same.
void show_value(Gtk::SpinButton& spin, double value);
/// True if a spin button shows the value, rounded to its number of digits. Leaving the field rounds
/// its value, which is no change by the user.
[[nodiscard]] bool shows_value(const Gtk::SpinButton& spin, double value);
void show_active(Gtk::ToggleButton& button, bool active);
void show_text(Gtk::Entry& entry, const Glib::ustring& text);

/// Registers Panel(T&, labels) as the panel of objects of exactly class T. Define one static object
/// in the panel's source file.
template <typename T, typename Panel>
struct PanelRegistration {
  PanelRegistration() {
    const auto make = [](Object& object, const Form::Labels& labels) -> Gtk::Widget* {
      auto* panel = new Panel(dynamic_cast<T&>(object), labels);
      panel->show_all();
      return panel;
    };
    register_panel(typeid(T), PanelKind::own, make);
    register_panel(typeid(T), PanelKind::properties, make);
  }
};

}  // namespace zemblar
