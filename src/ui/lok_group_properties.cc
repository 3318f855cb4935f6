#include "ui/lok_group_properties.h"

#include <gtkmm/button.h>

#include "core/i18n.h"
#include "core/toplevel.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"

namespace zemblar {
namespace {

const PanelRegistration<LokGroup, LokGroupProperties> group_registration;
const PanelRegistration<LokToplevel, LokToplevelProperties> toplevel_registration;

template <typename Child>
void add_new_button(Form& form, const char* text, zemblar::Object& container) {
  auto* button = Gtk::manage(new Gtk::Button(text, true));
  const auto parent = std::make_shared<ObjectRef<zemblar::Object>>(&container);
  button->signal_clicked().connect([parent] {
    if (*parent) (*parent)->add(new Child);
  });
  form.add_wide(*button);
}

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
