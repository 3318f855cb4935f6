#pragma once

#include <array>
#include <chrono>
#include <deque>
#include <map>
#include <utility>
#include <vector>

#include "locomotives/lok.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"
#include "simulator/trains/track_model.h"

namespace zemblar::simulator {

/// A train, its locomotive in the layout, and its recent history.
struct Driven {
  using Time = Clock::time_point;
  static constexpr Time never{};

  Train* train = nullptr;
  Lok* lok = nullptr;  // null while the layout has none for it
  std::deque<std::pair<const Block*, Time>>
      entered{};  // blocks that its leading end entered, newest first
  Time turned = never;
  Time placed = never;
  Time reversed = never;  // the time when the locomotive's direction changed
  Time braked = never;    // the time when its brake went on
  Time released = never;  // the time when its brake went off
  const BlockLink* front_at_brake = nullptr;
  Time misplaced = never;  // the last time when block control had it in another place or direction
  Time moved = never;      // the last time when `look` saw it move
  double travelled = 0;    // mm, at the last `look`
  Time unheard = never;    // the last time when a command may have been lost
  Time freed = never;      // the time when its brake was released by hand
  std::array<ScopedConnection, 3> followed{};  // of the locomotive

  void enter(const Block* block, Time time);
  /// The time when its leading end entered the block, or when it was put there.
  [[nodiscard]] Time came_into(const Block* block) const;
  /// True if block control has the train in its real place: both ends are in blocks that it holds,
  /// and the block of the tail is one that the train is in.
  [[nodiscard]] bool place_is_right() const;
  /// True if block control has the train's real leading end as its head.
  [[nodiscard]] bool faces_forwards() const;
};

/// Records the history of a track model's trains and blocks, so that the cause of a collision can
/// be found afterwards.
class TrackWitness {
 public:
  /// `longest_report` is the longest time from the rails to block control, `longest_command` that
  /// from block control to the train.
  TrackWitness(TrackModel& model, std::chrono::milliseconds longest_report,
               std::chrono::milliseconds longest_command);

  /// Follows the block until it ends.
  void follow(Block& block);
  Driven& add(Train& train, Lok* lok);
  /// Call when the train gets another locomotive in the layout, or none (null).
  void assign(Driven& driven, Lok* lok);
  /// Call when the train has been put on the track.
  void note_placed(Driven& driven);
  /// Call when the user has taken the block from its holder.
  void note_freed(const Block& block) { freed_[&block] = Clock::now(); }
  /// Call while nothing is received from the block's detector.
  void note_silence(const Block& block) { silences_[&block] = Clock::now(); }
  /// Records which trains have moved since the last call.
  void look();

  [[nodiscard]] std::vector<Driven>& trains() { return trains_; }
  [[nodiscard]] Driven* find(const Train* train);
  [[nodiscard]] Driven* find(const Lok* lok);
  /// The last time when a point was set in the block.
  [[nodiscard]] Driven::Time thrown(const Block* block) const;
  /// The last time when the block got another holder.
  [[nodiscard]] Driven::Time changed_hands(const Block* block) const;
  /// The last time when the block was freed by hand.
  [[nodiscard]] Driven::Time freed(const Block* block) const;
  /// The last time when nothing was received from the block's detector.
  [[nodiscard]] Driven::Time silent(const Block* block) const;
  /// The last time when the block's detector reported falsely; `never` if it did not.
  [[nodiscard]] Driven::Time false_report(const Block* block) const;
  /// The longest time from the rails to block control.
  [[nodiscard]] std::chrono::milliseconds longest_report() const;
  /// The longest time from the rails to the train's brake.
  [[nodiscard]] std::chrono::milliseconds longest_reaction() const {
    return longest_report() + longest_command_;
  }

  TrackModel& model;

 private:
  void note(const TrackEvent& event);
  static void note_brake(Driven& driven);

  std::chrono::milliseconds longest_report_;
  std::chrono::milliseconds longest_command_;
  std::map<const Block*, Driven::Time> thrown_;
  std::map<const Block*, Driven::Time> changed_hands_;
  std::map<const Block*, Driven::Time> freed_;
  std::map<const Block*, Driven::Time> silences_;
  std::map<const Block*, std::vector<ScopedConnection>> followed_;
  std::vector<Driven> trains_;
  ScopedConnection events_;
  ScopedConnection block_ending_;
};

}  // namespace zemblar::simulator
