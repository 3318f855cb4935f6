#include "ui/panels/device_toplevel_properties.h"

#include <gtkmm/arrow.h>
#include <gtkmm/label.h>
#include <gtkmm/menuitem.h>
#include <gtkmm/separator.h>

#include "core/i18n.h"
#include "core/toplevel.h"
#include "ui/toolkit/made_object.h"
#include "ui/toolkit/popup.h"

namespace zemblar {
namespace {

const PanelRegistration<DeviceToplevel, DTProps> registration;

}  // namespace

DTProps::DTProps(DeviceToplevel& toplevel, const Labels& labels)
    : Form(labels), toplevel_(&toplevel) {
  add_button();
  for (const auto& [tag, known] : document_classes()) {
    if (known.section == Section::devices && known.menu_text) add_item(known);
  }
  menu_.show_all();
}

void DTProps::add_button() {
  auto* label = Gtk::manage(new Gtk::Label(_("New _Device"), true));
  label->set_mnemonic_widget(button_);
  auto* row = Gtk::manage(new Gtk::HBox(false, 6));
  row->pack_start(*label, true, true);
  row->pack_start(*Gtk::manage(new Gtk::VSeparator), false, false);
  row->pack_start(*Gtk::manage(new Gtk::Arrow(Gtk::ARROW_DOWN, Gtk::SHADOW_NONE)), false, false);
  button_.add(*row);
  button_.signal_clicked().connect([this] { popup_below(menu_, button_); });
  add_wide(button_);
}

void DTProps::add_item(const DocumentClass& device_class) {
  auto* item = Gtk::manage(new Gtk::MenuItem(device_class.menu_text()));
  item->signal_activate().connect(
      sigc::bind(sigc::mem_fun(*this, &DTProps::add_device), device_class.make));
  menu_.append(*item);
}

void DTProps::add_device(Object* (*make)()) {
  if (toplevel_) signal_object_made().emit(*toplevel_->add(make()));
}

}  // namespace zemblar
