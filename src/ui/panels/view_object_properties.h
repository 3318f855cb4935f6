#pragma once

#include <gtkmm/comboboxtext.h>
#include <gtkmm/spinbutton.h>

#include <typeinfo>

#include "ui/toolkit/form.h"

namespace zemblar {

class ViewLabel;
class ViewObj;
class ViewSignal;

/// The panel of a signal's diagram object: anchor and angle.
class ViewSignalProperties : public Form {
 public:
  ViewSignalProperties(ViewSignal& signal, const Labels& labels);

 private:
  void turn();
  void follow();

  Glib::RefPtr<ViewSignal> signal_;
  Gtk::ComboBoxText anchor_;
  Gtk::SpinButton angle_;
  bool updating_ = false;
};

/// The panel of a label's diagram object: alignment.
class ViewLabelProperties : public Form {
 public:
  ViewLabelProperties(ViewLabel& label, const Labels& labels);

 private:
  void follow();
  void choose();

  Glib::RefPtr<ViewLabel> label_;
  Gtk::ComboBoxText align_;
  bool updating_ = false;
};

using DiagramPanelFactory = Gtk::Widget* (*)(ViewObj& object, const Form::Labels& labels);
void register_diagram_panel(const std::type_info& type, DiagramPanelFactory factory);

/// Registers Panel(T&, labels) as the panel of diagram objects of exactly class T. Define one
/// static object in the panel's source file.
template <typename T, typename Panel>
struct DiagramPanelRegistration {
  DiagramPanelRegistration() {
    register_diagram_panel(typeid(T), [](ViewObj& object, const Form::Labels& labels) {
      return static_cast<Gtk::Widget*>(new Panel(dynamic_cast<T&>(object), labels));
    });
  }
};

/// A new panel for a diagram object's own properties, owned by the caller; null for a class that
/// has none.
[[nodiscard]] Gtk::Widget* make_diagram_panel(ViewObj& object, const Form::Labels& labels);

}  // namespace zemblar
