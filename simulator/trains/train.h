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

/// A speed that goes over to another one at an even rate. Millimetres and seconds.
struct Motion {
  double speed = 0;   ///< not negative
  double target = 0;  ///< not negative
  double rate = 100;  ///< of the change, mm/s²; above 0

  [[nodiscard]] double distance_after(double time) const;
  [[nodiscard]] double speed_after(double time) const;
  /// Nothing when it stops before.
  [[nodiscard]] std::optional<double> time_to(double distance) const;
  [[nodiscard]] double time_to_target() const;
};

/// What a train is like. Millimetres and seconds; a model locomotive runs 200 to 600 mm/s.
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

/// A stretch of the way that a train stands on: a block with the two ends it was passed through.
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

  /// Stands in the block's middle, the decoder's leading end towards the link `towards`. One that
  /// is longer reaches back into the blocks behind; false when these do not go on so far.
  /// A speed that it was commanded before counts at once: stations repeat what they have sent.
  bool place(BlockLink& towards);
  void lift();
  [[nodiscard]] bool on_track() const { return !pieces_.empty(); }

  /// The decoder's speed step and direction. Against the present direction it brakes first.
  void command(unsigned step, bool forwards);
  void emergency_stop();
  /// Stops where it is, as against a buffer, until it is commanded away from there.
  void stop_dead();

  /// Without track power it stops as in an emergency; what was commanded counts when it is back.
  void set_power(bool on);

  /// Travels on for `time` seconds, at most to the next thing that happens; how far, in mm.
  double run(double time);
  /// Seconds until something happens: the train passes from block to block with one of its ends,
  /// or it has stopped. Nothing while it stands.
  [[nodiscard]] std::optional<double> next_event() const;

  /// The leading end has come to the end of its last block.
  [[nodiscard]] bool at_border() const;
  /// The link through which it goes on there.
  [[nodiscard]] BlockLink* leading_link() const;
  [[nodiscard]] BlockLink* trailing_link() const;
  /// Enters the block beyond that link.
  void enter(BlockLink* in, BlockLink* out);
  /// Drops the pieces that it has left. True when there were some.
  bool leave();
  /// Turns round after it has stopped, when that is what was commanded. True when it did.
  bool turn_if_wanted();

  [[nodiscard]] const TrainOptions& options() const { return options_; }
  [[nodiscard]] RailComEncoder& encoder() { return encoder_; }
  [[nodiscard]] const std::deque<WayPiece>& pieces() const { return pieces_; }
  /// Whether some part of it is in the block.
  [[nodiscard]] bool is_in(const Block* block) const;
  /// Whether it leads through this end of a block.
  [[nodiscard]] bool is_at(const BlockLink* link) const;
  /// The blocks in which it draws current; some may come twice.
  [[nodiscard]] std::vector<Block*> drawing_blocks() const;
  /// Where the locomotive's middle is.
  [[nodiscard]] const WayPiece& locomotive_piece() const;
  /// As it was when it last was told to run.
  [[nodiscard]] const Motion& motion() const { return motion_; }
  [[nodiscard]] bool moving() const { return motion_.speed > 0 || motion_.target > 0; }
  /// As it travels or would start to.
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
  std::vector<double> marks_;  // the ends of the train and of its contacts, behind its leading end
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
