#pragma once

#include <cstdint>
#include <set>
#include <string_view>
#include <vector>

#include "simulator/bus/simulated_bus.h"
#include "simulator/trains/track_model.h"

namespace zemblar::simulator {

/// The railway that one of the sample layouts is the plan of: track of the real lengths, RailCom
/// readers at the addresses that the layout has, and trains that stand where they do in the
/// morning.
///
/// Speeds and directions come from whoever simulates the command station, through `track`.
class LayoutRailway {
 public:
  explicit LayoutRailway(std::uint64_t seed = 1);
  LayoutRailway(const LayoutRailway&) = delete;
  LayoutRailway& operator=(const LayoutRailway&) = delete;

  /// Adds the readers, wires the blocks to the inputs that they have chosen, and puts the trains on
  /// the track of the open layout. Returns the trains that have found their place: none in a layout
  /// without these locomotives and blocks. For another layout it may be called again.
  std::vector<const Train*> build();
  /// The wires are laid anew, for blocks and inputs that have come or changed.
  void wire_blocks();
  /// The train of that name, or null.
  [[nodiscard]] Train* find_train(std::string_view name) const;

  SimulatedBus bus;
  TrackModel track;

 private:
  void add_readers();
  const Train* put(const char* lok, const char* block, TrainOptions options);

  std::set<std::uint8_t> readers_;  // by address
};

}  // namespace zemblar::simulator
