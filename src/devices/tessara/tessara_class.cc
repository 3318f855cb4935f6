#include "devices/tessara/tessara_class.h"

#include <vector>

#include "devices/tessara/device_tessara_bus.h"

namespace zemblar {
namespace {

std::vector<TessaraClass>& classes() {
  static std::vector<TessaraClass> all;
  return all;
}

/// The class that fits best, the first among equals; null if none fits.
const TessaraClass* best_for(DeviceTessara* device) {
  const TessaraClass* best = nullptr;
  int most = -1;
  for (const auto& entry : classes()) {
    const int score = entry.probe(device);
    if (score <= most) continue;
    best = &entry;
    most = score;
  }
  return best;
}

}  // namespace

TessaraClass::Registration::Registration(const TessaraClass& device_class) {
  classes().push_back(device_class);
}

const TessaraClass* TessaraClass::find(const std::string& tag) {
  for (const auto& entry : classes()) {
    if (tag == "!device/Tessara/" + entry.name) return &entry;
  }
  return nullptr;
}

// The probing device must release the port, or its turn on the bus, before the real device can use
// it.

DeviceTessara* TessaraClass::create_found(SerialPort* port) {
  DetachedPtr<DeviceTessara> device(new DeviceTessara);
  device->set_name("Probe");
  device->come_up_on(port);
  const auto* best = best_for(device.get());
  device.reset();
  return best ? best->create_on_port(port) : nullptr;
}

DeviceTessara* TessaraClass::create_found(DeviceTessaraBus* bus, std::uint8_t address) {
  const DeviceRef parent(bus);
  DetachedPtr<DeviceTessara> device(new DeviceTessara(bus, address));
  device->set_name("Probe");
  device->set_active(true);
  const auto* best = best_for(device.get());
  device.reset();
  return best && parent ? best->create_on_bus(bus, address) : nullptr;
}

std::optional<std::string> serial_nr_on(SerialPort* port) {
  DetachedPtr<DeviceTessara> device(new DeviceTessara);
  device->set_name("Test");
  try {
    device->come_up_on(port);
    return device->read_serial();
  } catch (...) {
    // There is no answer, or from another kind of hardware.
    return {};
  }
}

int probe_by_info(DeviceTessara* device, std::string_view model) {
  try {
    return device->read_info().starts_with(model) ? 0 : -1;
  } catch (...) {
    return -1;
  }
}

}  // namespace zemblar
