// Serial ports from udev. The ids are read from the port's USB device, because the properties of
// the port's own node may be those of a hub or a converter in between.

#include <gudev/gudev.h>

#include <algorithm>

#include "devices/port/hw_source.h"

namespace zemblar {
namespace {

struct Unref {
  void operator()(void* object) const { g_object_unref(object); }
};
using UdevDevice = std::unique_ptr<GUdevDevice, Unref>;

std::string text_of(const char* text) {
  return text ? text : "";
}

std::string upper(std::string text) {
  std::ranges::transform(text, text.begin(), g_ascii_toupper);
  return text;
}

/// The hardware id that drivers look for, such as "USB\VID_0403&PID_D780".
std::string hardware_id(GUdevDevice* usb) {
  const auto vendor = upper(text_of(g_udev_device_get_sysfs_attr(usb, "idVendor")));
  const auto product = upper(text_of(g_udev_device_get_sysfs_attr(usb, "idProduct")));
  return "USB\\VID_" + vendor + "&PID_" + product;
}

/// Changes each time that hardware is plugged in: the USB device number and the time at which the
/// port appeared.
std::string instance(GUdevDevice* port, GUdevDevice* usb) {
  return text_of(g_udev_device_get_sysfs_attr(usb, "busnum")) + "/" +
         text_of(g_udev_device_get_sysfs_attr(usb, "devnum")) + " " +
         text_of(g_udev_device_get_property(port, "USEC_INITIALIZED"));
}

HWDevice record_of(GUdevDevice* port, GUdevDevice* usb) {
  HWDevice record;
  record.object_name = text_of(g_udev_device_get_sysfs_path(port));
  record.description = text_of(g_udev_device_get_sysfs_attr(usb, "product"));
  record.friendly_name = text_of(g_udev_device_get_property(port, "ID_MODEL_FROM_DATABASE"));
  record.manufacturer = text_of(g_udev_device_get_sysfs_attr(usb, "manufacturer"));
  record.device_class = text_of(g_udev_device_get_subsystem(port));
  record.location = text_of(g_udev_device_get_property(port, "ID_PATH"));
  record.hardware_ids = {hardware_id(usb)};
  record.port_name = text_of(g_udev_device_get_device_file(port));
  record.instance = instance(port, usb);
  return record;
}

class UdevSource : public HWSource {
 public:
  UdevSource() {
    static constexpr const char* subsystems[] = {"tty", nullptr};
    client_ = g_udev_client_new(subsystems);
    changed_ = g_signal_connect(client_, "uevent", G_CALLBACK(on_event), this);
  }
  ~UdevSource() override {
    g_signal_handler_disconnect(client_, changed_);
    g_object_unref(client_);
  }

  std::vector<HWDevice> list() override {
    std::vector<HWDevice> records;
    auto* const ports = g_udev_client_query_by_subsystem(client_, "tty");
    for (auto* entry = ports; entry; entry = entry->next) {
      const UdevDevice port(G_UDEV_DEVICE(entry->data));
      const UdevDevice usb(
          g_udev_device_get_parent_with_subsystem(port.get(), "usb", "usb_device"));
      if (usb) records.push_back(record_of(port.get(), usb.get()));
    }
    g_list_free(ports);
    return records;
  }

 private:
  static void on_event(GUdevClient*, const char* /*action*/, GUdevDevice*, UdevSource* self) {
    self->signal_changed().emit();
  }

  GUdevClient* client_;
  gulong changed_;
};

}  // namespace

std::unique_ptr<HWSource> make_udev_source() {
  return std::make_unique<UdevSource>();
}

}  // namespace zemblar
