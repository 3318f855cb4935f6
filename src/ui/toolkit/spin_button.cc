#include "ui/toolkit/spin_button.h"

#include <gtkmm/private/spinbutton_p.h>

namespace zemblar {

constinit Class<SpinButton, Gtk::SpinButton, Gtk::CellEditable> SpinButton_Class("SpinButton");

SpinButton::SpinButton(double climb_rate, unsigned digits)
    : Gtk::SpinButton(Glib::ConstructParams(SpinButton_Class.init(), "climb-rate", climb_rate,
                                            "digits", digits, nullptr)) {}

void SpinButton::start_editing_vfunc(GdkEvent* /*event*/) {
  editing_.start();
}

}  // namespace zemblar
