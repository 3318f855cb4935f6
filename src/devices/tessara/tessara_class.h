#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "core/document_class.h"
#include "devices/tessara/device_tessara.h"

namespace zemblar {

/// A class of Tessara devices that the program can drive.
///
/// The file of the class registers it by a static `TessaraClass::Registration`; scans, ports and
/// layout files need no knowledge of the class itself.
struct TessaraClass {
  std::string name;  ///< in a tag of a layout file, after "!device/Tessara/"
  /// How well it fits the hardware behind a device, higher is better; -1 is not at all. Suspends.
  int (*probe)(DeviceTessara* device);
  /// A new one for hardware that was found, in service. They suspend, and throw when that fails.
  DeviceTessara* (*create_on_port)(SerialPort* port);
  DeviceTessara* (*create_on_bus)(DeviceTessaraBus* bus, std::uint8_t address);
  /// One that a layout file holds as a part of a bus.
  DeviceTessara* (*load)(const YAML::Node& node, DeviceTessaraBus* bus);

  /// The class for a tag of a layout file; null for an unknown one.
  static const TessaraClass* find(const std::string& tag);
  /// A device for hardware that nobody knows yet, of the class that fits best; null when none does.
  /// Otherwise as the operations above.
  static DeviceTessara* create_found(SerialPort* port);
  static DeviceTessara* create_found(DeviceTessaraBus* bus, std::uint8_t address);

  struct Registration {
    explicit Registration(const TessaraClass& device_class);
  };
};

/// The end of a device that belongs to no layout.
struct DestroyObject {
  void operator()(Object* object) const { object->destroy(); }
};
template <typename T>
using DetachedPtr = std::unique_ptr<T, DestroyObject>;

/// The serial number of what hangs on a port; none when nothing answers. Suspends.
[[nodiscard]] std::optional<std::string> serial_nr_on(SerialPort* port);

/// 0 when the device's info block begins like that, else -1. Suspends.
[[nodiscard]] int probe_by_info(DeviceTessara* device, std::string_view model);

/// Registers a class T, which can be made from nothing, from a bus and an address, and from a node
/// of a layout file with a bus or without one.
template <typename T>
class TessaraRegistration {
 public:
  TessaraRegistration(const std::string& name, int (*probe)(DeviceTessara*))
      : in_files_(document_class<T>(("!device/Tessara/" + name).c_str(), Section::devices)),
        in_family_({name, probe, create_on_port, create_on_bus, load}) {}

 private:
  static DeviceTessara* create_on_port(SerialPort* port) {
    DetachedPtr<T> device(new T);
    device->come_up_on(port);
    return device.release();
  }
  static DeviceTessara* create_on_bus(DeviceTessaraBus* bus, std::uint8_t address) {
    DetachedPtr<T> device(new T(bus, address));
    device->come_up_on_bus();
    return device.release();
  }
  static DeviceTessara* load(const YAML::Node& node, DeviceTessaraBus* bus) {
    return new T(node, bus);
  }

  DocumentClass::Registration in_files_;
  TessaraClass::Registration in_family_;
};

}  // namespace zemblar
