#include "ui/toolkit/script_hbox.h"

#include <gtkmm/private/box_p.h>

namespace zemblar {

constinit Class<ScriptHBox, Gtk::HBox, Gtk::CellEditable> ScriptHBox_Class("ScriptHBox");

ScriptHBox::ScriptHBox(bool homogeneous, int spacing)
    : Gtk::HBox(Glib::ConstructParams(ScriptHBox_Class.init(), "homogeneous", gboolean{homogeneous},
                                      "spacing", spacing, nullptr)) {}

void ScriptHBox::start_editing_vfunc(GdkEvent* /*event*/) {
  editing_.start();
}

void ScriptHBox::on_grab_focus() {
  child_focus(Gtk::DIR_TAB_FORWARD);
}

}  // namespace zemblar
