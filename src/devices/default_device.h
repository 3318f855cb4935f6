#pragma once

#include <set>

#include "devices/device.h"

namespace zemblar {

/// Forwards every operation to all command stations that are marked for default use.
///
/// One per layout, a part of the Layout and not a child of its devices; always active. Stations
/// join when they come into service and leave with it. A decoder update is fanned out through a
/// DecoderProxy and answered when all stations have answered; without any station in service it is
/// not answered at all, so that the decoder stays out of date and tries again when one comes.
///
/// A fan-out is skipped when the newest unanswered one of the same decoder and item carries the
/// same value: a burst of changes costs one command each and not one for each pair.
class DefaultDevice : public Device {
 public:
  DefaultDevice();

  void add_device(Device* device);
  void remove_device(Device* device);
  [[nodiscard]] const std::set<Device*>& devices() const { return devices_; }

  /// 2 when every station supports the feature, 1 when some do, 0 when none does or there is none.
  [[nodiscard]] int supports(std::string_view feature) const override;

 protected:
  void power_on() override;
  void power_off() override;
  void update_speed(DrivenDecoder* decoder) override;
  void update_direction(DrivenDecoder* decoder) override;
  void update_function(DrivenDecoder* decoder, unsigned fn) override;
  void set_point(unsigned address, unsigned output, bool on) override;
  void set_aspect(unsigned address, unsigned aspect) override;

 private:
  std::set<Device*> devices_;
};

}  // namespace zemblar
