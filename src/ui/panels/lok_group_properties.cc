#include "ui/panels/lok_group_properties.h"

#include "core/i18n.h"
#include "core/toplevel.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "ui/toolkit/new_button.h"

namespace zemblar {
namespace {

const PanelRegistration<LokGroup, LokGroupProperties> group_registration;
const PanelRegistration<LokToplevel, LokToplevelProperties> toplevel_registration;

void add_new_buttons(Form& form, zemblar::Object& container) {
  add_new_button<Lok>(form, _("New _Locomotive"), container);
  add_new_button<LokGroup>(form, _("New Locomotive _Group"), container);
}

}  // namespace

LokGroupProperties::LokGroupProperties(LokGroup& group, const Labels& labels)
    : Form(labels), name_(group) {
  add_row(_("_Name:"), name_);
  add_new_buttons(*this, group);
}

LokToplevelProperties::LokToplevelProperties(LokToplevel& toplevel, const Labels& labels)
    : Form(labels) {
  add_new_buttons(*this, toplevel);
}

}  // namespace zemblar
