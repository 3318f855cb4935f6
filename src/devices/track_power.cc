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

namespace {

template <typename Check>
std::vector<Device*> power_devices(const Object& parent, const Check& check) {
  std::vector<Device*> found;
  for_each_device(parent, [&](Device& device) {
    if (check(device) && switches_power(device)) found.push_back(&device);
  });
  return found;
}

}  // namespace

std::vector<Device*> power_stations(const Object& parent) {
  return power_devices(parent, [](const Device& device) { return device.active(); });
}

std::vector<Device*> lost_power_stations(const Object& parent) {
  return power_devices(parent, [](const Device& device) {
    return !device.active() && device.link_state().phase == LinkPhase::lost;
  });
}

PowerState power_state(const Object& parent) {
  const auto stations = power_stations(parent);
  if (stations.empty()) return PowerState::no_station;
  if (!lost_power_stations(parent).empty()) return PowerState::differs;
  const auto is_on = [](const Device* device) { return device->track_power(); };
  if (std::ranges::all_of(stations, is_on)) return PowerState::on;
  return std::ranges::any_of(stations, is_on) ? PowerState::differs : PowerState::off;
}

}  // namespace zemblar
