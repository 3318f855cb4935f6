#include "core/toplevel.h"

#include "core/i18n.h"

namespace zemblar {

Toplevel::Toplevel(Section section, const char* display_name)
    : Object(_(display_name)), section_(section) {}

bool Toplevel::can_contain(Object* child) const {
  return toplevel_accepts(section_, child);
}

ViewToplevel::ViewToplevel()
    : Glib::ObjectBase("ViewToplevel"), Toplevel(Section::views, N_("Views")) {}

LokToplevel::LokToplevel()
    : Glib::ObjectBase("LokToplevel"), Toplevel(Section::locomotives, N_("Locomotives")) {}

PointToplevel::PointToplevel()
    : Glib::ObjectBase("PointToplevel"), Toplevel(Section::points, N_("Points & Signals")) {}

BlockToplevel::BlockToplevel()
    : Glib::ObjectBase("BlockToplevel"), Toplevel(Section::blocks, N_("Blocks")) {}

DeviceToplevel::DeviceToplevel()
    : Glib::ObjectBase("DeviceToplevel"), Toplevel(Section::devices, N_("Devices")) {}

ScriptToplevel::ScriptToplevel()
    : Glib::ObjectBase("ScriptToplevel"), Toplevel(Section::scripts, N_("Scripts")) {}

}  // namespace zemblar
