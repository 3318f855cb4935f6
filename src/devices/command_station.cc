#include "devices/command_station.h"

#include "core/entry_change.h"
#include "core/layout.h"
#include "core/property.h"
#include "devices/default_device.h"

namespace zemblar {

CommandStation::CommandStation(const Glib::ustring& name_format, const char* default_property)
    : Device(name_format), default_property_(default_property) {
  register_property<bool>(this, default_property, &CommandStation::get_use_as_default,
                          &CommandStation::set_use_as_default);
}

void CommandStation::on_deleting() {
  leave_default();
  Device::on_deleting();
}

void CommandStation::set_use_as_default(bool on) {
  if (on == use_as_default_) return;
  before_change();
  use_as_default_ = on;
  on ? join_default() : leave_default();
  notify_property(*this, default_property_);
  // Those whom nobody served until now.
  if (on && active()) signal_in_service().emit(*this);
}

void CommandStation::restore(const EntryChange& change) {
  Device::restore(change);
  change.read<bool>("use-as-default", [this](bool on) { set_use_as_default(on); });
}

void CommandStation::join_default() {
  if (!use_as_default_) return;
  if (auto* device = default_device()) device->add_device(this);
}

void CommandStation::leave_default() {
  if (auto* device = default_device()) device->remove_device(this);
}

DefaultDevice* CommandStation::default_device() const {
  const auto* layout = this->layout();
  return layout ? &layout->get_default_device() : nullptr;
}

int CommandStation::supports(std::string_view feature) const {
  if (feature == "DCC/Power") return 2;
  return feature == "DCC" || feature.starts_with("DCC/") ? 1 : 0;
}

}  // namespace zemblar
