#include "devices/track_power.h"

#include <algorithm>

#include "devices/device.h"

namespace zemblar {

void for_each_device(const Object& parent, const std::function<void(Device&)>& visit) {
  for (auto* child : parent) {
    if (child->is_deleting()) continue;
    if (auto* device = dynamic_cast<Device*>(child)) visit(*device);
    for_each_device(*child, visit);
  }
}

bool switches_power(const Device& device) {
  constexpr int full_support = 2;
  return device.supports("DCC/Power") == full_support;
}

std::vector<Device*> power_stations(const Object& parent) {
  std::vector<Device*> stations;
  for_each_device(parent, [&stations](Device& device) {
    if (device.active() && switches_power(device)) {
      stations.push_back(&device);
    }
  });
  return stations;
}

PowerState power_state(const std::vector<Device*>& stations) {
  if (stations.empty()) return PowerState::no_station;
  const auto is_on = [](const Device* device) { return device->track_power(); };
  if (std::ranges::all_of(stations, is_on)) return PowerState::on;
  return std::ranges::any_of(stations, is_on) ? PowerState::differs : PowerState::off;
}

}  // namespace zemblar
