#pragma once

#include <gtkmm/comboboxtext.h>
#include <gtkmm/spinbutton.h>

#include "ui/toolkit/form.h"

namespace zemblar {

class ViewLabel;
class ViewObj;
class ViewSignal;

/// How a signal stands in a diagram.
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

/// How a label stands in a diagram.
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

/// The panel of a diagram object's own properties; null for a kind that has none. The caller owns
/// it.
[[nodiscard]] Gtk::Widget* make_diagram_panel(ViewObj& object, const Form::Labels& labels);

}  // namespace zemblar
