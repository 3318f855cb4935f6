#include "ui/panels/liusb_properties.h"

#include <gtkmm/label.h>

#include "core/i18n.h"
#include "core/property.h"
#include "devices/liusb/device_liusb.h"
#include "ui/toolkit/form.h"

namespace zemblar {
namespace {

const PanelRegistration<LIUSB, LIUSBProperties> registration;

}  // namespace

LIUSBProperties::LIUSBProperties(LIUSB& liusb, const Glib::RefPtr<Gtk::SizeGroup>& labels)
    : Gtk::VBox(false, 4), name_(liusb), enable_default_(_("_Use as a default DCC Device"), true) {
  set_border_width(6);
  auto* row = Gtk::manage(new Gtk::HBox(false, 4));
  auto* label = Gtk::manage(new Gtk::Label(_("_Name:"), true));
  label->set_alignment(0, 0.5);
  label->set_mnemonic_widget(name_);
  if (labels) labels->add_widget(*label);
  row->pack_start(*label, false, false);
  row->pack_start(name_);
  pack_start(*row, false, false);
  pack_start(enable_default_, false, false);
  enable_default_.set_tooltip_text(_("It then drives all decoders for which no device is chosen"));
  bind_property(liusb, "enable-default", enable_default_, "active");
}

}  // namespace zemblar
