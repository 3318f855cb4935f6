#include "ui/toolkit/script_alignment.h"

#include <gtkmm/private/alignment_p.h>

namespace zemblar {

constinit Class<ScriptAlignment, Gtk::Alignment, Gtk::CellEditable> ScriptAlignment_Class(
    "ScriptAlignment");

// A variable argument list passes floating-point numbers as double.
ScriptAlignment::ScriptAlignment(float xalign, float yalign, float xscale, float yscale)
    : Gtk::Alignment(Glib::ConstructParams(ScriptAlignment_Class.init(), "xalign", double{xalign},
                                           "yalign", double{yalign}, "xscale", double{xscale},
                                           "yscale", double{yscale}, nullptr)) {}

void ScriptAlignment::start_editing_vfunc(GdkEvent* /*event*/) {
  editing_.start();
}

void ScriptAlignment::on_grab_focus() {
  child_focus(Gtk::DIR_TAB_FORWARD);
}

}  // namespace zemblar
