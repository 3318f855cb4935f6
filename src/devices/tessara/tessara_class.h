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
/// The source file of the class registers it by a static `TessaraClass::Registration`, so that
/// scans, ports and layout files need not know the class.
struct TessaraClass {
  std::string name;  ///< in a tag of a layout file, after "!device/Tessara/"
  /// How well the class fits the hardware of a device: higher is better, -1 means not at all.
  /// Suspends.
  int (*probe)(DeviceTessara* device);
  /// These make a new device, in service, for hardware that was found. They suspend, and throw on
  /// failure.
  DeviceTessara* (*create_on_port)(SerialPort* port);
  DeviceTessara* (*create_on_bus)(DeviceTessaraBus* bus, std::uint8_t address);
  /// Reads a device in the entry of a bus.
  DeviceTessara* (*load)(const YAML::Node& node, DeviceTessaraBus* bus);

  /// The class with this tag in a layout file, or null.
  static const TessaraClass* find(const std::string& tag);
  /// Makes a device of the class that fits the hardware best; null if none does. Suspends and
  /// throws like the functions above.
  static DeviceTessara* create_found(SerialPort* port);
  static DeviceTessara* create_found(DeviceTessaraBus* bus, std::uint8_t address);

  struct Registration {
    explicit Registration(const TessaraClass& device_class);
  };
};

/// Destroys a device that belongs to no layout.
struct DestroyObject {
  void operator()(Object* object) const { object->destroy(); }
};
template <typename T>
using DetachedPtr = std::unique_ptr<T, DestroyObject>;

/// The serial number of the hardware on a port; no value if there is no answer. Suspends.
[[nodiscard]] std::optional<std::string> serial_nr_on(SerialPort* port);

/// 0 if the device's info block begins with `model`, else -1. Suspends.
[[nodiscard]] int probe_by_info(DeviceTessara* device, std::string_view model);

/// Registers a class T with three constructors: without arguments, from a bus and an address, and
/// from a node of a layout file with an optional bus.
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
