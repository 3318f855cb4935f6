#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "locomotives/lok.h"
#include "runtime/timer.h"
#include "simulator/bus_in_service.h"
#include "simulator/track_model.h"
#include "simulator/track_reader.h"
#include "simulator/track_station.h"
#include "track/zone.h"

namespace zemblar::simulator {

/// A train of a soak run, its locomotive in the layout, and what it has been through lately.
struct Driven {
  using Time = Clock::time_point;
  static constexpr Time never{};

  Train* train = nullptr;
  Lok* lok = nullptr;
  std::deque<std::pair<const Block*, Time>> entered{};  // by its leading end, the latest first
  Time turned = never;
  Time placed = never;
  Time reversed = never;  // the locomotive's direction was changed
  Time braked = never;    // its brake has risen
  Time released = never;  // its brake has fallen
  const BlockLink* front_at_brake = nullptr;
  Time misplaced = never;  // block control had it elsewhere, or the wrong way round
  Time moved = never;      // as far as `watch` has seen
  double travelled = 0;    // the same

  void enter(const Block* block, Time time);
  /// When its leading end came into the block, or it was put there.
  [[nodiscard]] Time came_into(const Block* block) const;
  /// Whether block control has it where it is: both ends in blocks that it holds, the tail's among
  /// those that it is really in.
  [[nodiscard]] bool place_is_right() const;
  /// Whether block control takes the end for its head that it really leads with.
  [[nodiscard]] bool faces_forwards() const;
};

/// A railway for a long run: an empty current layout, a station, detectors and a track model, all
/// in memory and in virtual time.
class SoakScene {
 public:
  /// With so many readers on a simulated bus, which the program's own drivers poll; without any,
  /// detectors tell the layout directly.
  explicit SoakScene(std::uint64_t seed, unsigned readers = 0);
  ~SoakScene();
  SoakScene(const SoakScene&) = delete;
  SoakScene& operator=(const SoakScene&) = delete;

  /// With an input of its own, or with that of another block.
  template <typename T>
  T& add_block(const std::string& name, double length, const Block* shares_with = nullptr) {
    auto* block = new T;
    enter_block(*block, name, length, shares_with);
    return *block;
  }
  [[nodiscard]] const std::vector<Block*>& blocks() const { return blocks_; }
  [[nodiscard]] TrackStation& station() { return *station_; }
  /// Null without a bus.
  [[nodiscard]] BusInService* bus() { return bus_.get(); }

  /// Beside the track, with a locomotive of its address.
  Driven& add_train(TrainOptions options);
  [[nodiscard]] std::vector<Driven>& trains() { return trains_; }
  [[nodiscard]] Driven* find(const Train* train);
  [[nodiscard]] Driven* find(const Lok* lok);
  /// When a point was last set in the block.
  [[nodiscard]] Driven::Time thrown(const Block* block) const;
  /// When the block's holder last changed.
  [[nodiscard]] Driven::Time changed_hands(const Block* block) const;
  bool place(Driven& driven, BlockLink& towards);
  /// Takes the train from the track and enters its locomotive anew: nothing is left of it.
  void clear_away(Driven& driven);

  /// Lets time pass, and notes who moves.
  void pass(std::chrono::milliseconds time);
  /// How long it has wanted to move, and has not.
  [[nodiscard]] Clock::duration held_up(const Driven& driven) const;

  /// Where the trains are and what block control believes, a line for each.
  [[nodiscard]] std::string describe() const;

  static constexpr std::chrono::milliseconds station_delay{50};

  VirtualClock clock;
  Chance chance;
  TrackModel model;
  std::uint64_t blocks_entered = 0;

 private:
  void enter_block(Block& block, const std::string& name, double length, const Block* shares_with);
  void give_input(Block& block, const Block* shares_with);
  void note(const TrackEvent& event);
  [[nodiscard]] Lok* new_lok(const TrainOptions& options);

  TrackReader* reader_;
  TrackStation* station_;
  std::unique_ptr<BusInService> bus_;
  unsigned inputs_ = 0;  // of the bus that blocks have
  std::vector<Block*> blocks_;
  std::map<const Block*, Driven::Time> thrown_;
  std::map<const Block*, Driven::Time> changed_hands_;
  std::vector<Driven> trains_;
};

}  // namespace zemblar::simulator
