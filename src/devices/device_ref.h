#pragma once

#include <memory>
#include <vector>

#include "devices/device.h"

namespace zemblar {

/// A pointer to a device that may end at any time, for code that suspends or calls handlers while
/// it uses the device.
template <typename T>
class DeviceRef {
 public:
  explicit DeviceRef(T* device) : device_(device), alive_(device->liveness()) {}

  /// The device, or null if it has ended.
  [[nodiscard]] T* get() const { return *alive_ ? device_ : nullptr; }
  T* operator->() const { return device_; }
  explicit operator bool() const { return *alive_; }

 private:
  T* device_;
  std::shared_ptr<const bool> alive_;
};

/// The devices of class T among an object's children.
template <typename T>
std::vector<DeviceRef<T>> device_children(const Object& parent) {
  std::vector<DeviceRef<T>> devices;
  for (auto* child : parent) {
    if (auto* device = dynamic_cast<T*>(child)) devices.emplace_back(device);
  }
  return devices;
}

}  // namespace zemblar
