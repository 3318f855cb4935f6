#include "locomotives/lok_registry.h"

#include "core/layout.h"
#include "devices/default_device.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

/// A station that comes into service gets what it has missed.
const sigc::connection resend_when_in_service =
    Device::signal_in_service().connect([](Device& device) {
      const auto& by_default = Layout::get().get_default_device();
      const bool is_member = by_default.devices().contains(&device);
      std::vector<Glib::RefPtr<Decoder>> concerned;
      for_each_lok(Layout::get().get_loks(), [&](Lok& lok) {
        for (const auto& decoder : lok.get_decoders()) {
          auto* driver = decoder->get_device();
          if (driver ? driver == &device : is_member) concerned.push_back(decoder);
        }
      });
      for (const auto& decoder : concerned) decoder->resend();
    });

}  // namespace

void LokRegistry::update(const std::vector<Glib::RefPtr<Decoder>>& decoders) {
  clear();
  for (const auto& decoder : decoders) {
    auto& device = decoder->driving_device();
    const auto address = decoder->get_address();
    if (device.add_lok(address, lok_)) entries_.push_back({&device, address, device.liveness()});
  }
}

void LokRegistry::clear() {
  for (const auto& entry : entries_) {
    if (*entry.device_lives) entry.device->remove_lok(entry.address, lok_);
  }
  entries_.clear();
}

void for_each_lok(const Object& parent, const std::function<void(Lok&)>& visit) {
  for (auto* child : parent) {
    if (auto* lok = dynamic_cast<Lok*>(child)) {
      visit(*lok);
    } else {
      for_each_lok(*child, visit);
    }
  }
}

}  // namespace zemblar
