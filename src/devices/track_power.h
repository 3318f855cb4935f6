#pragma once

#include <functional>
#include <vector>

namespace zemblar {

class Device;
class Object;

/// The combined track power of all command stations in service.
enum class PowerState {
  no_station,  ///< no station is in service
  on,
  off,
  differs,  ///< some are on, others are off, or one is lost and may be either
};

/// Visits every device below `parent`, at any depth, in the order of the document, except those
/// that are about to end.
void for_each_device(const Object& parent, const std::function<void(Device&)>& visit);

/// True if the device can switch track power.
[[nodiscard]] bool switches_power(const Device& device);
/// The devices in service below `parent` that switch track power.
[[nodiscard]] std::vector<Device*> power_stations(const Object& parent);
/// The devices below `parent` that switch track power and are lost; their track may be powered.
[[nodiscard]] std::vector<Device*> lost_power_stations(const Object& parent);
[[nodiscard]] PowerState power_state(const Object& parent);

}  // namespace zemblar
