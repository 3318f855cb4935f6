#pragma once

#include <chrono>

#include "devices/device.h"

namespace zemblar::simulator {

class TrackModel;

/// A command station in memory, which passes commands directly to the trains of a track model. The
/// model must outlive it. Not in a layout file.
class TrackStation : public Device {
 public:
  explicit TrackStation(TrackModel& model);
  /// Adds one to the current layout's devices, in service and in default use.
  static TrackStation* in_service(TrackModel& model);
  void save(YAML::Emitter& out) const override;

  /// Delay from the command to its effect and answer, in which the fiber sleeps.
  std::chrono::milliseconds delay{0};

  [[nodiscard]] int supports(std::string_view feature) const override;

 protected:
  void update_speed(DrivenDecoder* decoder) override;
  void update_direction(DrivenDecoder* decoder) override;

 private:
  void command(DrivenDecoder* decoder, std::uint32_t item);

  TrackModel& model_;
};

}  // namespace zemblar::simulator
