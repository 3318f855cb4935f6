#include "ui/panels/railcom_reader_properties.h"

#include "core/i18n.h"
#include "devices/tessara/device_tessara_railcom_reader.h"
#include "ui/toolkit/update_guard.h"

namespace zemblar {
namespace {

const PanelRegistration<DeviceTessaraRailComReader, DeviceTessaraRailComReaderProperties>
    registration;

}  // namespace

DeviceTessaraRailComReaderProperties::DeviceTessaraRailComReaderProperties(
    DeviceTessaraRailComReader& reader, const Labels& labels)
    : Form(labels), reader_(&reader), name_(reader), device_(driver_choices("DCC")) {
  add_row(_("_Name:"), name_);
  add_row(_("_DCC Device:"), device_);
  device_.explain(
      _("Where locomotives are looked up by their addresses. Not saved with the layout"));
  follow();
  device_.property_object().signal_changed().connect(
      sigc::mem_fun(*this, &DeviceTessaraRailComReaderProperties::choose));
  reader.property_dcc_device().signal_changed().connect(
      sigc::mem_fun(*this, &DeviceTessaraRailComReaderProperties::follow));
}

void DeviceTessaraRailComReaderProperties::choose() {
  if (!updating_ && reader_) reader_->set_dcc_device(dynamic_cast<Device*>(device_.get_object()));
}

void DeviceTessaraRailComReaderProperties::follow() {
  const UpdateGuard scope(updating_);
  if (reader_) device_.set_object(reader_->get_dcc_device());
}

}  // namespace zemblar
