#pragma once

#include <memory>
#include <string>
#include <vector>

#include "locomotives/lok.h"
#include "runtime/timer.h"
#include "simulator/bus/bus_in_service.h"
#include "simulator/trains/track_model.h"
#include "simulator/trains/track_reader.h"
#include "simulator/trains/track_station.h"
#include "simulator/trains/track_witness.h"
#include "track/zone.h"

namespace zemblar::simulator {

/// A railway for a long run: an empty current layout, a station, detectors and a track model, all
/// in memory and in virtual time.
class SoakScene {
 public:
  /// `readers` is the number of readers on a simulated bus, which the program's drivers poll; for
  /// 0, detectors report to the layout directly.
  explicit SoakScene(std::uint64_t seed, unsigned readers = 0);
  ~SoakScene();
  SoakScene(const SoakScene&) = delete;
  SoakScene& operator=(const SoakScene&) = delete;

  /// Adds a block, with its own input or with the input of another block.
  template <typename T>
  T& add_block(const std::string& name, double length, const Block* shares_with = nullptr) {
    auto* block = new T;
    enter_block(*block, name, length, shares_with);
    return *block;
  }
  [[nodiscard]] const std::vector<Block*>& blocks() const { return blocks_; }
  [[nodiscard]] TrackStation& station() { return *station_; }
  /// The bus, or null.
  [[nodiscard]] BusInService* bus() { return bus_.get(); }

  /// Adds a train that is not on the track, and a locomotive with its address.
  Driven& add_train(TrainOptions options);
  [[nodiscard]] std::vector<Driven>& trains() { return witness.trains(); }
  [[nodiscard]] Driven* find(const Train* train) { return witness.find(train); }
  [[nodiscard]] Driven* find(const Lok* lok) { return witness.find(lok); }
  bool place(Driven& driven, BlockLink& towards);
  /// Takes the train from the track, and replaces its locomotive by a new one.
  void clear_away(Driven& driven);

  /// Lets time pass, and records which trains move.
  void pass(std::chrono::milliseconds time);
  /// The time for which the train has had a speed and has not moved.
  [[nodiscard]] Clock::duration held_up(const Driven& driven) const;

  /// The place of each train, and the place that block control assumes, a line for each.
  [[nodiscard]] std::string describe();

  static constexpr std::chrono::milliseconds station_delay{50};

  VirtualClock clock;
  Chance chance;
  TrackModel model;
  TrackWitness witness;
  std::uint64_t blocks_entered = 0;

 private:
  void enter_block(Block& block, const std::string& name, double length, const Block* shares_with);
  void give_input(Block& block, const Block* shares_with);
  [[nodiscard]] Lok* new_lok(const TrainOptions& options);

  TrackReader* reader_;
  TrackStation* station_;
  std::unique_ptr<BusInService> bus_;
  unsigned inputs_ = 0;  // of the bus that blocks have
  std::vector<Block*> blocks_;
};

}  // namespace zemblar::simulator
