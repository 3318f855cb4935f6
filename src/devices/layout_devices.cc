#include "core/layout_devices.h"

#include "core/layout.h"
#include "core/property.h"
#include "devices/default_device.h"
#include "devices/track_power.h"

namespace zemblar {
namespace {

class Devices : public LayoutDevices, public sigc::trackable {
 public:
  explicit Devices(Layout& layout) : layout_(layout), default_device_(new DefaultDevice) {
    layout.signal_object_added().connect(sigc::mem_fun(*this, &Devices::follow));
    layout.signal_object_removed().connect(sigc::mem_fun(*this, &Devices::on_removed));
  }

  DefaultDevice& default_device() override { return *default_device_; }
  bool track_power() const override { return track_power_; }

  // The property may already have the value while a single device differs, so each device is
  // switched.
  void set_track_power(bool on) override {
    for_each_device(layout_.get_devices(), [on](Device& device) {
      if (switches_power(device)) device.set_track_power(on);
    });
  }

  void go_out_of_service() override {
    if (!layout_.has_toplevel(Section::devices)) return;
    for_each_device(layout_.get_devices(), [](Device& device) { device.go_out_of_service(); });
  }
  void end() override { default_device_->destroy(); }

 private:
  void follow(Object* object) {
    auto* device = dynamic_cast<Device*>(object);
    if (!device || !switches_power(*device)) return;
    device->property_track_power().signal_changed().connect(
        sigc::mem_fun(*this, &Devices::recompute));
    recompute();
  }

  void on_removed(Object* object) {
    if (dynamic_cast<Device*>(object)) recompute();
  }

  void recompute() {
    bool any = false;
    bool all = true;
    if (layout_.has_toplevel(Section::devices)) {
      for_each_device(layout_.get_devices(), [&](Device& device) {
        if (!switches_power(device)) return;
        any = true;
        all = all && device.track_power();
      });
    }
    const bool on = any && all;
    if (on == track_power_) return;
    track_power_ = on;
    notify_property(layout_, "track-power");
  }

  Layout& layout_;
  DefaultDevice* default_device_;  // ends with the layout, though it is not in the tree
  bool track_power_ = false;
};

std::unique_ptr<LayoutDevices> make_devices(Layout& layout) {
  return std::make_unique<Devices>(layout);
}

const bool is_registered = [] {
  LayoutDevices::make() = &make_devices;
  return true;
}();

}  // namespace
}  // namespace zemblar
