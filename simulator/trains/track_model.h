#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "runtime/scoped_connection.h"
#include "runtime/timer.h"
#include "simulator/trains/track_sensors.h"
#include "simulator/trains/train.h"

namespace zemblar {
class Block;
class BlockLink;
}  // namespace zemblar

namespace zemblar::simulator {

/// An event on the track.
struct TrackEvent {
  enum class Kind {
    entered,    ///< the leading end has come into `block`
    left,       ///< the last part has gone from some block
    turned,     ///< it has reversed its direction
    ran_off,    ///< it reached an open end, or a point set against it, and stopped abruptly
    collision,  ///< it entered `block`, where `other` is; both stopped abruptly
  };

  Kind kind;
  Train* train;
  Block* block;        ///< the block of its leading end
  Train* other;        ///< null except for a collision
  bool point_against;  ///< it ran off at a block without a route
};

/// Trains that move over the blocks of the current layout, along the present routes, and their
/// effect on the detectors.
///
/// Speeds and directions come from a simulated command station, which passes every command to
/// `command`. Events on a block are passed to its detector; several blocks may share one.
///
/// It advances from event to event, using runtime/timer: a train has a timer only while it moves,
/// an input only while a report is pending. All randomness comes from the seed.
///
/// When a block ends, the trains on it are taken from the track. Handlers of the model's signals
/// must not destroy it.
class TrackModel {
 public:
  explicit TrackModel(std::uint64_t seed = 1);
  ~TrackModel();
  TrackModel(const TrackModel&) = delete;
  TrackModel& operator=(const TrackModel&) = delete;

  /// The length in mm, by default one metre. Takes effect for trains that enter the block later.
  void set_length(const Block* block, double length);
  void set_default_length(double length) { default_length_ = length; }
  [[nodiscard]] double length_of(const Block* block) const;

  /// Adds a train, beside the track at first; owned by the model.
  Train& add_train(TrainOptions options);
  [[nodiscard]] const std::vector<std::unique_ptr<Train>>& trains() const { return trains_; }
  /// Puts a train in the middle of the link's block, with the decoder's leading end towards the
  /// link. False if it is too long for the track behind, or another train is there.
  bool place(Train& train, BlockLink& towards);
  /// Takes a train from the track.
  void lift(Train& train);

  /// The detector that is wired to the block's rails, or null. By default the block's input, if
  /// that is in memory.
  std::function<TrackDetector*(const Block*)> detector_of;

  // Commands from the station.
  /// Speed step 0 to 126. An address that no train has is ignored.
  void command(unsigned address, unsigned step, bool forwards);
  void emergency_stop(unsigned address);
  /// Without track power all trains stop as in an emergency; commands given meanwhile take effect
  /// when the power returns. Detectors have their own supply and keep working.
  void set_power(bool on);

  [[nodiscard]] SensorOptions& sensor_options() { return sensors_.options; }
  [[nodiscard]] const TrackSensors& sensors() const { return sensors_; }

  /// Handlers may command trains, place and lift them, and set points.
  sigc::signal<void, const TrackEvent&>& signal_event() { return signal_event_; }

  [[nodiscard]] std::uint64_t collisions() const { return collisions_; }
  [[nodiscard]] std::uint64_t times_run_off() const { return times_run_off_; }
  /// The present speed of the train, in mm/s.
  [[nodiscard]] double speed(const Train& train) const;
  /// The distance that the train has travelled since it was made, in mm.
  [[nodiscard]] double travelled(const Train& train) const;

 private:
  struct Run;

  [[nodiscard]] Run& run_of(const Train& train) const;
  void catch_up(Run& run);
  void settle(Run& run);
  bool advance(Run& run);
  void hit(Run& run, Block& block, Train& other);
  void look(Run& run);
  [[nodiscard]] unsigned side_of(const Train& train, const TrackDetector& detector) const;
  void arm(Run& run);
  void emit(const TrackEvent& event);
  void on_block_ending(const Block* block);
  void on_link_ending(const BlockLink* link);
  [[nodiscard]] Train* find_train_in(const Block* block, const Train& besides) const;

  double default_length_ = 1000;
  std::uint64_t collisions_ = 0;
  std::uint64_t times_run_off_ = 0;
  std::map<const Block*, double> lengths_;
  std::vector<std::unique_ptr<Train>> trains_;
  std::vector<std::unique_ptr<Run>> runs_;  // in the order of trains_
  TrackSensors sensors_;
  sigc::signal<void, const TrackEvent&> signal_event_;
  ScopedConnection block_ending_;
  ScopedConnection link_ending_;
};

}  // namespace zemblar::simulator
