#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "simulator/trains/railcom_encoder.h"

namespace zemblar {
class Block;
class BlockLink;
}  // namespace zemblar

namespace zemblar::simulator {

/// A speed that changes to a target at a constant rate. In millimetres and seconds.
struct Motion {
  double speed = 0;   ///< not negative
  double target = 0;  ///< not negative
  double rate = 100;  ///< of the change, mm/s²; above 0

  [[nodiscard]] double distance_after(double time) const;
  [[nodiscard]] double speed_after(double time) const;
  /// Seconds until the distance is travelled; no value when the motion stops before.
  [[nodiscard]] std::optional<double> time_to(double distance) const;
  [[nodiscard]] double time_to_target() const;
};

/// The properties of a train. In millimetres and seconds; a model locomotive runs 200 to 600 mm/s.
struct TrainOptions {
  std::string name;
  DccAddress address;
  double length = 500;
  double locomotive = 200;  ///< length of the locomotive, at the decoder's leading end
  double top_speed = 400;   ///< at step 126
  double acceleration = 150;
  double deceleration = 250;
  double emergency_deceleration = 900;
  /// The last vehicle is lit or has resistors on its axles, so that detectors see it.
  bool last_vehicle_draws = true;
};

/// A block that a train is in, with the two ends of its route.
struct WayPiece {
  Block* block;
  BlockLink* rear;   ///< towards the end of the train that is not the decoder's leading one
  BlockLink* front;  ///< towards the decoder's leading end
  double length;
};

/// Length of a block in mm.
using BlockLength = std::function<double(const Block*)>;

/// A train on its way through the blocks; geometry and speed, with no clock of its own.
///
/// Places along the way are counted from the rear of its rearmost piece towards the decoder's
/// leading end, in millimetres. The pieces stay as they were when the train ran over them, whatever
/// points are set under it.
class Train {
 public:
  Train(TrainOptions options, BlockLength length_of);

  /// Puts the train in the middle of the link's block, with the decoder's leading end towards the
  /// link. A train that is longer than the block reaches into the blocks behind; false when these
  /// are too short. A speed that was commanded before takes effect at once, because stations
  /// repeat their commands.
  bool place(BlockLink& towards);
  void lift();
  [[nodiscard]] bool on_track() const { return !pieces_.empty(); }

  /// Sets the speed step and the direction of the decoder. A change of direction brakes first.
  void command(unsigned step, bool forwards);
  void emergency_stop();
  /// Stops at once, as at a buffer, until a command leads away from there.
  void stop_dead();

  /// Without track power the train stops as in an emergency; the commanded speed takes effect when
  /// the power returns.
  void set_power(bool on);

  /// Travels for `time` seconds, but not beyond the next event; returns the distance in mm.
  double run(double time);
  /// Seconds until the next event: one end of the train reaches another block, or the train stops.
  /// No value while the train stands.
  [[nodiscard]] std::optional<double> next_event() const;

  /// True if the leading end is at the end of its block.
  [[nodiscard]] bool at_border() const;
  /// The link through which the train leaves that block.
  [[nodiscard]] BlockLink* leading_link() const;
  [[nodiscard]] BlockLink* trailing_link() const;
  /// Enters the block of the two links.
  void enter(BlockLink* in, BlockLink* out);
  /// Removes the pieces that the train has left; true if there were any.
  bool leave();
  /// Changes the direction of a train that has stopped, if that was commanded; true if it did.
  bool turn_if_wanted();

  [[nodiscard]] const TrainOptions& options() const { return options_; }
  [[nodiscard]] RailComEncoder& encoder() { return encoder_; }
  [[nodiscard]] const std::deque<WayPiece>& pieces() const { return pieces_; }
  /// True if some part of the train is in the block.
  [[nodiscard]] bool is_in(const Block* block) const;
  /// True if the train leads through this end of a block.
  [[nodiscard]] bool is_at(const BlockLink* link) const;
  /// The blocks in which the train draws current; a block may be listed twice.
  [[nodiscard]] std::vector<Block*> drawing_blocks() const;
  /// The piece with the middle of the locomotive.
  [[nodiscard]] const WayPiece& locomotive_piece() const;
  /// The motion at the last `run`.
  [[nodiscard]] const Motion& motion() const { return motion_; }
  [[nodiscard]] bool moving() const { return motion_.speed > 0 || motion_.target > 0; }
  /// The direction in which the train runs, or would start.
  [[nodiscard]] bool forwards() const { return forwards_; }
  [[nodiscard]] unsigned step() const { return step_; }
  [[nodiscard]] bool wanted_forwards() const { return wanted_forwards_; }

 private:
  struct Contact {
    double from;  // behind the decoder's leading end
    double to;
  };

  void set_target();
  [[nodiscard]] double way_length() const;
  [[nodiscard]] double place_of(double mark) const;
  [[nodiscard]] double distance_to_border(double mark) const;
  [[nodiscard]] const WayPiece& piece_at(double place) const;

  TrainOptions options_;
  BlockLength length_of_;
  RailComEncoder encoder_;
  std::vector<Contact> contacts_;
  std::vector<double>
      marks_;  // distances of the ends of the train and of its contacts from its leading end
  std::deque<WayPiece> pieces_;
  double front_ = 0;  // place of the decoder's leading end
  Motion motion_;
  bool forwards_ = true;
  bool wanted_forwards_ = true;
  unsigned step_ = 0;
  bool dead_ = false;
  bool powered_ = true;
};

}  // namespace zemblar::simulator
