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

/// The base of a property panel: rows of a label and a field, under each other.
///
/// All labels stand in one size group, which the panels of a window share, so that the fields of
/// all of them begin at the same place. A label's access key goes to its field.
class Form : public Gtk::VBox {
 public:
  using Object = zemblar::Object;  // Gtk::Object is not meant
  using Labels = Glib::RefPtr<Gtk::SizeGroup>;

  /// `labels` may be null; the form then has a size group of its own.
  explicit Form(const Labels& labels);

  /// `label` has its access key marked by an underscore. A field that does not stretch keeps its
  /// natural width, with a unit behind it.
  void add_row(const Glib::ustring& label, Gtk::Widget& field);
  void add_row(const Glib::ustring& label, Gtk::Widget& field, const Glib::ustring& unit);
  void add_row(const Glib::ustring& label, Gtk::Widget& field, Gtk::Widget& behind);
  /// A field without a label, under the other fields.
  void add_field(Gtk::Widget& field);
  /// A heading in markup, with some room above.
  Gtk::Label& add_heading(const Glib::ustring& markup);
  /// Shows or hides the row in which a field or a part of one stands.
  void show_row(Gtk::Widget& field, bool visible);
  /// A widget of the whole width.
  void add_wide(Gtk::Widget& widget);

  [[nodiscard]] const Labels& labels() const { return labels_; }

 private:
  void pack_row(const Glib::ustring& label, Gtk::Widget& mnemonic, Gtk::Widget& field);

  Labels labels_;
};

/// Bring a widget up to date, leaving alone what a person has typed if nothing changed.
void show_value(Gtk::SpinButton& spin, double value);
/// Whether a spin button shows a value, with as many digits as it has: leaving the field rounds
/// what is in it, though nobody has changed anything.
[[nodiscard]] bool shows_value(const Gtk::SpinButton& spin, double value);
void show_active(Gtk::ToggleButton& button, bool active);
void show_text(Gtk::Entry& entry, const Glib::ustring& text);

/// Makes Panel(T&, labels) the panel of the objects of exactly class T: a static object in the
/// panel's file.
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
