#include "ui/panels/tessara_bus_properties.h"

#include "core/i18n.h"
#include "devices/tessara/device_tessara_bus.h"
#include "ui/panels/tessara_scan_dialog.h"

namespace zemblar {
namespace {

const PanelRegistration<DeviceTessaraBus, DeviceTessaraBusProperties> registration;

}  // namespace

DeviceTessaraBusProperties::DeviceTessaraBusProperties(DeviceTessaraBus& bus, const Labels& labels)
    : Form(labels), bus_(&bus), name_(bus), scan_(_("_Scan For Tessara Devices"), true) {
  add_row(_("_Name:"), name_);
  serial_.set_alignment(0, 0.5);
  serial_.set_selectable();
  add_row(_("Serial Number:"), serial_);
  add_wide(scan_);
  scan_.signal_clicked().connect(sigc::mem_fun(*this, &DeviceTessaraBusProperties::scan));
  bus.property_active().signal_changed().connect(
      sigc::mem_fun(*this, &DeviceTessaraBusProperties::follow_service));
  follow_service();
}

void DeviceTessaraBusProperties::scan() {
  if (bus_) TessaraScanDialog::run(*bus_, dynamic_cast<Gtk::Window*>(get_toplevel()));
}

void DeviceTessaraBusProperties::follow_service() {
  if (!bus_) return;
  const auto& serial = bus_->get_serial_nr();
  serial_.set_text(serial.empty() ? _("not yet known") : Glib::strescape(serial));
  scan_.set_sensitive(bus_->active());
  scan_.set_tooltip_text(bus_->active() ? _("Adds the devices that this layout does not have yet")
                                        : _("Plug in the bus to scan it"));
}

}  // namespace zemblar
