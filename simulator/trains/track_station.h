#pragma once

#include <chrono>

#include "devices/device.h"

namespace zemblar::simulator {

class TrackModel;

/// A command station in memory: what it is told goes straight to the trains of a track model, which
/// must live longer. Not in a layout file.
class TrackStation : public Device {
 public:
  explicit TrackStation(TrackModel& model);
  /// One in the current layout's devices, in service, for decoders without a device of their own.
  static TrackStation* in_service(TrackModel& model);
  void save(YAML::Emitter& out) const override;

  /// From the command to the train, and from there to the answer; the fiber sleeps before.
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
