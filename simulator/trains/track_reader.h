#pragma once

#include <string_view>

#include "devices/railcom/detector.h"
#include "runtime/timer.h"
#include "simulator/trains/track_detector.h"

namespace zemblar::simulator {

/// One input of a reader in memory: a detector without a wire that goes by the clock. Not in a
/// layout file.
class TrackInput : public RailComDetector, public TrackDetector {
 public:
  TrackInput();
  void save(YAML::Emitter& out) const override;

  void set_current(bool on, unsigned side = 0) override;
  void receive(std::string_view dcc, std::string_view bytes) override;
  [[nodiscard]] bool current() const override { return state() != 0; }
  [[nodiscard]] unsigned side() const override { return orientation(); }

 protected:
  void on_deleting() override;
  [[nodiscard]] Time now() const override { return Clock::now().time_since_epoch(); }

 private:
  void forget_later();

  Timeout forgetting_;  // armed while something is due
};

/// A reader in memory; its inputs are its children. Not in a layout file.
class TrackReader : public Detector {
 public:
  TrackReader();
  void save(YAML::Emitter& out) const override;

  TrackInput* add_input();
};

}  // namespace zemblar::simulator
