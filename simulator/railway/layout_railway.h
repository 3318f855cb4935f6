#pragma once

#include <cstdint>
#include <set>
#include <string_view>
#include <vector>

#include "simulator/bus/simulated_bus.h"
#include "simulator/trains/track_model.h"

namespace zemblar::simulator {

/// The railway of one of the sample layouts: track with realistic lengths, RailCom readers at the
/// addresses in the layout, and trains at their initial places.
///
/// Speeds and directions come from a simulated command station, through `track`.
class LayoutRailway {
 public:
  explicit LayoutRailway(std::uint64_t seed = 1);
  LayoutRailway(const LayoutRailway&) = delete;
  LayoutRailway& operator=(const LayoutRailway&) = delete;

  /// Adds the readers, wires the blocks to the inputs that they have chosen, and puts the trains on
  /// the track of the open layout. Returns the trains that have found their place: none in a layout
  /// without these locomotives and blocks. For another layout it may be called again.
  std::vector<const Train*> build();
  /// Wires the blocks again, after blocks or inputs were added or changed.
  void wire_blocks();
  /// Puts the train of a locomotive in a block, facing its right end. Null if the open layout does
  /// not have both.
  const Train* put(const char* lok, const char* block, TrainOptions options);
  /// The train of that name, or null.
  [[nodiscard]] Train* find_train(std::string_view name) const;

  SimulatedBus bus;
  TrackModel track;

 private:
  void add_readers();

  std::set<std::uint8_t> readers_;  // by address
};

}  // namespace zemblar::simulator
