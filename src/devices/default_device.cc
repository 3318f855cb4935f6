#include "devices/default_device.h"

#include <algorithm>

#include "core/i18n.h"
#include "devices/decoder_proxy.h"

namespace zemblar {

DefaultDevice::DefaultDevice() : Glib::ObjectBase("DefaultDevice"), Device(_("Default Device")) {
  enter_service();
}

void DefaultDevice::add_device(Device* device) {
  if (!devices_.insert(device).second) return;
  // The commands in flight have not been asked of this one.
  newest_.clear();
  deleted_[device] =
      sigc::connection(device->signal_deleted().connect([this, device] { remove_device(device); }));
}

void DefaultDevice::remove_device(Device* device) {
  devices_.erase(device);
  deleted_.erase(device);
}

int DefaultDevice::supports(std::string_view feature) const {
  if (devices_.empty()) return 0;
  const auto answers = [feature](const Device* device) { return device->supports(feature); };
  if (std::ranges::all_of(devices_, [&](auto* device) { return answers(device) == 2; })) return 2;
  return std::ranges::any_of(devices_, [&](auto* device) { return answers(device) != 0; }) ? 1 : 0;
}

// Members come and go while operations run: the walk is over a copy, and skips who has left.
void DefaultDevice::for_each_in_service(const std::function<void(Device&)>& visit) {
  const auto alive = liveness();
  const auto members = devices_;
  for (auto* device : members) {
    if (*alive && devices_.contains(device) && device->active()) visit(*device);
  }
}

void DefaultDevice::power_on() {
  for_each_in_service([](Device& device) { device.set_track_power(true); });
}

void DefaultDevice::power_off() {
  for_each_in_service([](Device& device) { device.set_track_power(false); });
}

void DefaultDevice::set_point(unsigned address, unsigned output, bool on) {
  for_each_in_service([=](Device& device) { device.run_set_point(address, output, on); });
}

void DefaultDevice::set_aspect(unsigned address, unsigned aspect) {
  for_each_in_service([=](Device& device) { device.run_set_aspect(address, aspect); });
}

void DefaultDevice::update_speed(DrivenDecoder* decoder) {
  fan_out(decoder, DecoderUpdate::speed_bit, decoder->get_speed(),
          [](Device& device, DrivenDecoder* proxy) { device.run_update_speed(proxy); });
}

void DefaultDevice::update_direction(DrivenDecoder* decoder) {
  fan_out(decoder, DecoderUpdate::direction_bit,
          static_cast<std::uint32_t>(decoder->get_direction()),
          [](Device& device, DrivenDecoder* proxy) { device.run_update_direction(proxy); });
}

void DefaultDevice::update_function(DrivenDecoder* decoder, unsigned fn) {
  fan_out(decoder, DecoderUpdate::function_bit(fn), decoder->get_function(fn) ? 1 : 0,
          [fn](Device& device, DrivenDecoder* proxy) { device.run_update_function(proxy, fn); });
}

void DefaultDevice::fan_out(DrivenDecoder* decoder, std::uint32_t bit, std::uint32_t value,
                            const Operation& operation) {
  const auto serves = [decoder](Device* device) {
    return device->active() && device->reaches(*decoder);
  };
  if (std::ranges::none_of(devices_, serves)) return;
  const Item item(decoder, bit);
  const auto same = newest_.find(item);
  if (same != newest_.end() && same->second.value == value) return;

  const auto alive = liveness();
  const auto serial = ++fan_outs_;
  newest_[item] = {value, serial};
  const auto proxy = DecoderProxy::create(decoder);
  int count = 0;
  for_each_in_service([&](Device& device) {
    if (!device.reaches(*decoder)) return;
    ++count;
    operation(device, proxy.operator->());
  });
  proxy->wait(count);
  if (!*alive) return;
  const auto newest = newest_.find(item);
  if (newest != newest_.end() && newest->second.serial == serial) newest_.erase(newest);
  decoder->complete(proxy->state());
}

}  // namespace zemblar
