#pragma once

#include <memory>

namespace zemblar {

class DefaultDevice;
class Layout;

/// What the layer of the devices does for a layout: the default device, and the track power of all
/// command stations together.
///
/// The layout makes it in its constructor, and owns it. The devices' layer
/// fills `make` before `main`, so that the document knows no class above it.
class LayoutDevices {
 public:
  virtual ~LayoutDevices() = default;

  [[nodiscard]] virtual DefaultDevice& default_device() = 0;
  /// Whether every device that switches track power reports it on; false without any.
  [[nodiscard]] virtual bool track_power() const = 0;
  virtual void set_track_power(bool on) = 0;
  /// Called before the devices of the layout end.
  virtual void go_out_of_service() = 0;
  /// Called when they have ended, and before this object goes: ends the default device.
  virtual void end() = 0;

  using Make = std::unique_ptr<LayoutDevices> (*)(Layout& layout);
  static Make& make();
};

}  // namespace zemblar
