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
  Lok* lok = nullptr;                                   // null while the layout has none for it
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
  Time unheard = never;    // what it was told may not have reached it
  Time freed = never;      // its brake was released by hand
  std::array<ScopedConnection, 3> followed{};  // of the locomotive

  void enter(const Block* block, Time time);
  /// When its leading end came into the block, or it was put there.
  [[nodiscard]] Time came_into(const Block* block) const;
  /// Whether block control has it where it is: both ends in blocks that it holds, the tail's among
  /// those that it is really in.
  [[nodiscard]] bool place_is_right() const;
  /// Whether block control takes the end for its head that it really leads with.
  [[nodiscard]] bool faces_forwards() const;
};

/// Records the history of a track model's trains and blocks, so that the cause of a collision can
/// be found afterwards.
class TrackWitness {
 public:
  /// `longest_report` is from the rails to block control, `longest_command` from there to the
  /// train.
  TrackWitness(TrackModel& model, std::chrono::milliseconds longest_report,
               std::chrono::milliseconds longest_command);

  /// Follows the block until it ends.
  void follow(Block& block);
  Driven& add(Train& train, Lok* lok);
  /// The train has another locomotive in the layout, or null for none.
  void assign(Driven& driven, Lok* lok);
  /// The train has been put on the track afresh.
  void note_placed(Driven& driven);
  /// Somebody has taken the block from its holder by hand.
  void note_freed(const Block& block) { freed_[&block] = Clock::now(); }
  /// The block's detector is not heard now.
  void note_silence(const Block& block) { silences_[&block] = Clock::now(); }
  /// Records which trains have moved since the last call.
  void look();

  [[nodiscard]] std::vector<Driven>& trains() { return trains_; }
  [[nodiscard]] Driven* find(const Train* train);
  [[nodiscard]] Driven* find(const Lok* lok);
  /// When a point was last set in the block.
  [[nodiscard]] Driven::Time thrown(const Block* block) const;
  /// When the block's holder last changed.
  [[nodiscard]] Driven::Time changed_hands(const Block* block) const;
  /// When the block was last freed by hand.
  [[nodiscard]] Driven::Time freed(const Block* block) const;
  /// When the detector of the block was last not heard.
  [[nodiscard]] Driven::Time silent(const Block* block) const;
  /// When the detector of the block was last wrong, if ever.
  [[nodiscard]] Driven::Time false_report(const Block* block) const;
  /// From the rails to block control, at most.
  [[nodiscard]] std::chrono::milliseconds longest_report() const;
  /// From the rails to the train's brake, at most.
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
