#pragma once

#include <algorithm>
#include <vector>

#include "devices/railcom/detector.h"

namespace zemblar::simulator {

/// A detector that reports at once what its caller says.
class ToldDetector : public Detector {
 public:
  ToldDetector() : Glib::ObjectBase("ToldDetector"), Detector("Detector %1") {}

  [[nodiscard]] bool occupied() const override { return occupied_; }
  [[nodiscard]] unsigned orientation() const override { return orientation_; }
  [[nodiscard]] std::vector<Lok*> detected() const override { return seen_; }

  void occupy(bool on = true) {
    occupied_ = on;
    signal_changed().emit();
  }
  /// Reports as readers do: the occupancy first, then the locomotive.
  void see(Lok* lok, unsigned orientation = 1) {
    note(lok, orientation);
    signal_changed().emit();
    // A handler may have ended the locomotive, which this detector has then lost.
    if (std::ranges::find(seen_, lok) != seen_.end()) signal_arrived().emit(lok);
  }
  /// The first half of `see`: sets the state and reports nothing.
  void note(Lok* lok, unsigned orientation) {
    occupied_ = true;
    orientation_ = orientation;
    seen_.push_back(lok);
  }
  /// The second half of `see`: reports the state.
  void report(Lok* lok) {
    signal_changed().emit();
    signal_arrived().emit(lok);
  }
  void lose(Lok* lok) {
    std::erase(seen_, lok);
    signal_left().emit(lok);
  }

 private:
  bool occupied_ = false;
  unsigned orientation_ = 0;
  std::vector<Lok*> seen_;
};

}  // namespace zemblar::simulator
