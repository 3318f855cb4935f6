#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zemblar {

/// What the system tells about one piece of hardware.
struct HWDevice {
  std::string object_name;  ///< the system's own name for it; the key
  std::string description;
  std::string friendly_name;
  std::string manufacturer;
  std::string device_class;
  std::string location;
  std::vector<std::string> hardware_ids;    ///< such as "USB\VID_0403&PID_D780"
  std::vector<std::string> compatible_ids;  ///< the same for the kinds that it belongs to
  std::string port_name;                    ///< of its serial port; empty when it has none
  std::string instance;  ///< another one each time that something is plugged in under that name

  bool operator==(const HWDevice&) const = default;

  /// Letters of either case are the same.
  [[nodiscard]] bool has_hardware_id(std::string_view id) const;
};

}  // namespace zemblar
