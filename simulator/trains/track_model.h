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

/// Something that has happened on the track.
struct TrackEvent {
  enum class Kind {
    entered,    ///< the leading end has come into `block`
    left,       ///< the last part has gone from some block
    turned,     ///< it goes the other way from now on
    ran_off,    ///< it came to an open end, or to a point set against it, and stopped dead
    collision,  ///< it came into `block`, where `other` is: both stopped dead
  };

  Kind kind;
  Train* train;
  Block* block;        ///< of its leading end
  Train* other;        ///< null but for a collision
  bool point_against;  ///< it ran off where a block had no way through
};

/// Trains that move over the blocks of the current layout, as the points lie when they come, and
/// what the detectors see of them.
///
/// Speeds and directions come from a command station: whoever stands for one hands every command to
/// `command`. What happens on a block is told to its detector; several may share one.
///
/// It follows time from event to event by runtime/timer: a train has a timer only while it moves,
/// an input only while something is on its way. Everything that is random comes from the seed.
///
/// The layout's blocks may end while trains stand on them: these are taken from the track. The
/// model must not be destroyed by its own observers.
class TrackModel {
 public:
  explicit TrackModel(std::uint64_t seed = 1);
  ~TrackModel();
  TrackModel(const TrackModel&) = delete;
  TrackModel& operator=(const TrackModel&) = delete;

  /// In mm; a metre unless told otherwise. For trains that come into the block from then on.
  void set_length(const Block* block, double length);
  void set_default_length(double length) { default_length_ = length; }
  [[nodiscard]] double length_of(const Block* block) const;

  /// A train beside the track. The model owns it.
  Train& add_train(TrainOptions options);
  [[nodiscard]] const std::vector<std::unique_ptr<Train>>& trains() const { return trains_; }
  /// Puts it into the middle of the link's block, the decoder's leading end towards the link;
  /// false when it is too long for the track behind, or another train is there.
  bool place(Train& train, BlockLink& towards);
  /// Takes it from the track.
  void lift(Train& train);

  /// What is wired to the block's rails, or null: unless told otherwise its input, when that is in
  /// memory.
  std::function<TrackDetector*(const Block*)> detector_of;

  // From the command station.
  /// Speed step 0 to 126. An address that no train has is ignored.
  void command(unsigned address, unsigned step, bool forwards);
  void emergency_stop(unsigned address);
  /// Without track power everything stops as in an emergency; what is commanded meanwhile counts
  /// when it is back. Detectors have a supply of their own and go on.
  void set_power(bool on);

  [[nodiscard]] SensorOptions& sensor_options() { return sensors_.options; }
  [[nodiscard]] const TrackSensors& sensors() const { return sensors_; }

  /// Handlers may command trains, place and lift them, and set points.
  sigc::signal<void, const TrackEvent&>& signal_event() { return signal_event_; }

  [[nodiscard]] std::uint64_t collisions() const { return collisions_; }
  [[nodiscard]] std::uint64_t times_run_off() const { return times_run_off_; }
  /// How fast the train is now, in mm/s.
  [[nodiscard]] double speed(const Train& train) const;
  /// How far it has travelled since it was made, in mm.
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
