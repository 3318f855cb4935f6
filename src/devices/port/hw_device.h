#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zemblar {

/// The system's description of one piece of hardware.
struct HWDevice {
  std::string object_name;  ///< the system's name of the hardware; the key
  std::string description;
  std::string friendly_name;
  std::string manufacturer;
  std::string device_class;
  std::string location;
  std::vector<std::string> hardware_ids;    ///< such as "USB\VID_0403&PID_D780"
  std::vector<std::string> compatible_ids;  ///< ids of the classes that it belongs to
  std::string port_name;                    ///< name of its serial port; empty if it has none
  std::string instance;  ///< changes each time that hardware is plugged in under this name

  bool operator==(const HWDevice&) const = default;

  /// Compares without regard to case.
  [[nodiscard]] bool has_hardware_id(std::string_view id) const;
};

}  // namespace zemblar
