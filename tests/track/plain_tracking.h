#pragma once

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "locomotives/lok.h"
#include "track/block.h"

namespace zemblar::test {

/// Block control written down a second time, handler by handler and without regard to speed, for
/// tests that compare `Lok` with it after each event.
///
/// Joins, ways and detectors are read from the real railway; places, brakes, holders and watches
/// are kept here. The test reports each event to both. Copies are independent of one another.
class PlainTracking {
 public:
  struct Train {
    BlockLink* front = nullptr;
    BlockLink* back = nullptr;
    bool orientation_known = false;
    bool brake = false;
    bool forwards = true;
  };
  /// Where RailCom sees a locomotive.
  struct Report {
    BlockLink* front;
    BlockLink* back;
    bool certain;
  };
  /// Thrown where a walk comes to its target from the wrong side: the program ends there.
  struct AssertionFails {
    const char* condition;
  };
  enum class Signal { occupied, route };
  /// What is worth counting: how a walk can end, and that the head can go round in a circle.
  enum Ending { at_target, held_before, passed_before, end_of_track, asserted, circle, endings };

  [[nodiscard]] const Train& train(Lok* lok) { return trains_[lok]; }
  [[nodiscard]] const Lok* holder(Block* block) const {
    const auto found = holders_.find(block);
    return found == holders_.end() ? nullptr : found->second;
  }
  /// How many handlers the signal has.
  [[nodiscard]] std::size_t watches(Block* block, Signal signal) {
    return watches_[{block, signal}].size();
  }
  [[nodiscard]] const std::array<unsigned, endings>& reached() const { return reached_; }
  void count(Ending ending) { ++reached_[ending]; }

  /// Calls the handlers of the block's signal. One that is disconnected by another is not called
  /// any more, a new one not yet.
  void emit(Block* block, Signal signal) {
    const auto& present = watches_[{block, signal}];
    for (const auto each : std::vector(present)) {
      if (std::ranges::find(present, each.number, &Watch::number) == present.end()) continue;
      (this->*each.handler)(each.lok);
    }
  }

  /// Throws AssertionFails; the model is of no use after that.
  void detected(Lok* lok, const Report& report) {
    auto* b = report.front->get_block();
    auto& train = trains_[lok];
    if (holder(b)) {
      if (holder(b) == lok && report.certain) orient(train, report);
    } else if (!train.front) {
      place(train, report);
      claim(b, lok);
      reconnect(lok);
    } else {
      move(lok, report);
      reconnect(lok);
      const auto* ahead = neighbour(train.front);
      if (ahead && ahead->occupied()) on_ahead_occupied(lok);
    }
  }

  void turn_round(Lok* lok) {
    auto& train = trains_[lok];
    train.forwards = !train.forwards;
    std::swap(train.front, train.back);
    reconnect(lok);
  }
  void set_brake(Lok* lok, bool brake) { trains_[lok].brake = brake; }
  /// Null frees the block.
  void replace_lok(Block* block, Lok* lok) {
    holders_.erase(block);
    if (lok) claim(block, lok);
  }

  /// Call these three while what ends is still in place.
  void end(Lok* lok) {
    leave(lok);
    trains_.erase(lok);
  }
  void end(const BlockLink* link) {
    for (const auto& [lok, train] : std::map(trains_)) {
      if (train.front == link || train.back == link) leave(lok);
    }
  }
  void end(Block* block) {
    for (const auto& [lok, train] : std::map(trains_)) {
      if (is_in_span(block, train)) leave(lok);
    }
    holders_.erase(block);
    for (const auto signal : {Signal::occupied, Signal::route}) watches_.erase({block, signal});
  }

 private:
  using Handler = void (PlainTracking::*)(Lok*);
  struct Watch {
    unsigned number;
    Lok* lok;
    Handler handler;
  };
  using Links = std::set<const BlockLink*>;

  static BlockLink* next(BlockLink* link) { return link->get_block()->next_link(link); }
  static Block* neighbour(const BlockLink* link) {
    return link && link->get_partner() ? link->get_partner()->get_block() : nullptr;
  }

  static constexpr unsigned unreachable = std::numeric_limits<unsigned>::max();

  static unsigned distance(BlockLink* start, const BlockLink* target) {
    if (target == start) return 0;
    unsigned count = 0;
    for (auto* link = start;;) {
      link = link->get_partner();
      if (!link || link == start) return unreachable;
      if (link == target) return count;
      link = next(link);
      if (!link || link == start) return unreachable;
      ++count;
      if (link == target) return count;
    }
  }

  // --- Watches ---

  void watch(Lok* lok, Block* block, Signal signal, Handler handler) {
    watches_[{block, signal}].push_back({++last_number_, lok, handler});
  }
  void unwatch(const Lok* lok) {
    for (auto& [where, watches] : watches_) {
      std::erase_if(watches, [=](const auto& each) { return each.lok == lok; });
    }
  }

  void reconnect(Lok* lok) {
    unwatch(lok);
    const auto& train = trains_[lok];
    if (!train.front || !train.back) return;
    auto* rear = train.back;
    Links passed;
    while (!rear->get_block()->has_input()) {
      auto* n = next(rear);
      if (n == train.front) break;
      rear = n ? n->get_partner() : nullptr;
      if (!rear || !passed.insert(rear).second) return lose(lok);
    }
    watch(lok, train.front->get_block(), Signal::occupied, &PlainTracking::on_front_occupied);
    watch(lok, rear->get_block(), Signal::occupied, &PlainTracking::on_rear_occupied);
    if (auto* ahead = neighbour(train.front)) {
      watch(lok, ahead, Signal::occupied, &PlainTracking::on_ahead_occupied);
      watch(lok, ahead, Signal::route, &PlainTracking::on_ahead_route);
    }
    if (auto* behind = neighbour(train.back)) {
      watch(lok, behind, Signal::occupied, &PlainTracking::on_behind_occupied);
      watch(lok, behind, Signal::route, &PlainTracking::reconnect);
    }
  }

  // --- Places and holders ---

  void claim(Block* block, Lok* lok) { holders_.emplace(block, lok); }
  void release(Block* block, const Lok* lok) {
    if (holder(block) == lok) holders_.erase(block);
  }
  void lose(Lok* lok) {
    trains_[lok].front = trains_[lok].back = nullptr;
    unwatch(lok);
  }
  void leave(Lok* lok) {
    lose(lok);
    std::erase_if(holders_, [=](const auto& entry) { return entry.second == lok; });
  }
  static void place(Train& train, const Report& report) {
    train.front = report.front;
    train.back = report.back;
    train.orientation_known = report.certain;
  }
  static bool is_in_span(const Block* block, const Train& train) {
    if (train.front && train.front->get_block() == block) return true;
    Links passed;
    for (auto* link = train.back; link && passed.insert(link).second;) {
      if (link->get_block() == block) return true;
      auto* n = next(link);
      link = n && n != train.front ? n->get_partner() : nullptr;
    }
    return false;
  }

  // --- Occupancy ---

  void on_ahead_occupied(Lok* lok) {
    auto& train = trains_[lok];
    const auto* first = train.front->get_partner();
    if (first && first->get_block()->occupied()) train.orientation_known = true;
    bool moved = false;
    while (auto* p = train.front->get_partner()) {
      if (p == train.back) break;
      if (moved && p == first) {
        count(circle);
        break;
      }
      auto* b = p->get_block();
      if (b->has_input() && !b->occupied()) {
        train.brake = false;
        break;
      }
      if (holder(b) && holder(b) != lok) {
        train.brake = true;
        break;
      }
      if (!next(p)) break;
      train.front = next(p);
      moved = true;
      claim(b, lok);
    }
    if (moved) reconnect(lok);
  }

  void on_behind_occupied(Lok* lok) {
    auto& train = trains_[lok];
    const auto* behind = neighbour(train.back);
    if (train.orientation_known || !behind || !behind->has_input() || !behind->occupied()) return;
    std::swap(train.front, train.back);
    train.orientation_known = true;
    on_ahead_occupied(lok);
  }

  void on_front_occupied(Lok* lok) {
    auto& train = trains_[lok];
    Links passed;
    while (!train.front->get_block()->occupied()) {
      release(train.front->get_block(), lok);
      auto* n = next(train.front);
      if (!n || n == train.back || !n->get_partner()) return lose(lok);
      train.front = n->get_partner();
      if (!passed.insert(train.front).second) return lose(lok);
    }
    if (passed.empty()) return;
    train.brake = false;
    reconnect(lok);
  }

  void on_rear_occupied(Lok* lok) {
    auto& train = trains_[lok];
    if (!release_undetected_tail(lok)) return;
    Links passed;
    for (auto* b = train.back->get_block(); b->has_input() && !b->occupied();
         b = train.back->get_block()) {
      release(b, lok);
      auto* n = next(train.back);
      if (!n || n == train.front || !n->get_partner()) return lose(lok);
      train.back = n->get_partner();
      if (!passed.insert(train.back).second) return lose(lok);
    }
    if (!passed.empty()) reconnect(lok);
  }

  /// False when that is all.
  bool release_undetected_tail(Lok* lok) {
    auto& train = trains_[lok];
    auto* link = train.back;
    Links passed;
    while (!link->get_block()->has_input()) {
      auto* n = next(link);
      if (n == train.front) return false;
      link = n ? n->get_partner() : nullptr;
      if (link && passed.insert(link).second) continue;
      lose(lok);
      return false;
    }
    if (link != train.back && link->get_block()->occupied()) return false;
    for (; train.back != link; train.back = next(train.back)->get_partner()) {
      release(train.back->get_block(), lok);
    }
    return true;
  }

  void on_ahead_route(Lok* lok) {
    const auto* ahead = neighbour(trains_[lok].front);
    trains_[lok].brake = !ahead || ahead->occupied();
    reconnect(lok);
  }

  // --- RailCom ---

  static void orient(Train& train, const Report& report) {
    train.orientation_known = true;
    const auto w = distance(report.front, train.front);
    const auto x = distance(report.front, train.back);
    const auto y = distance(report.back, train.front);
    const auto z = distance(report.back, train.back);
    const int sign = y > z && w < x ? 1 : y < z && x < w ? -1 : 0;
    if (sign == (train.forwards ? -1 : 1)) std::swap(train.front, train.back);
  }

  void move(Lok* lok, const Report& report) {
    auto& train = trains_[lok];
    const auto a = distance(train.front, report.front);
    const auto b = distance(train.front, report.back);
    const auto c = distance(train.back, report.front);
    const auto d = distance(train.back, report.back);
    if (a <= std::max(c, d) && b < a) {
      walk(lok, train.front, report.front, report, "front != front_");
    } else if (b <= std::max(c, d) && a < b) {
      walk(lok, train.back, report.front, report, "back != front_");
      if (report.certain) std::swap(train.front, train.back);
    } else if (d < std::max(a, b) && c < d) {
      walk(lok, train.back, report.back, report, "back != back_");
    } else if (c < std::max(a, b) && d < c) {
      walk(lok, train.front, report.back, report, "front != back_");
      if (report.certain) std::swap(train.front, train.back);
    }
  }

  void walk(Lok* lok, BlockLink*& end, const BlockLink* target, const Report& report,
            const char* condition) {
    const auto before = holders_;
    const auto jump = [&](Ending why) {
      if (why == end_of_track) holders_ = before;
      place(trains_[lok], report);
      count(why);
    };
    while (end != target) {
      end = end->get_partner();
      if (!end) return jump(end_of_track);
      if (before.contains(end->get_block())) return jump(held_before);
      if (holder(end->get_block())) return jump(passed_before);
      if (end == target) throw AssertionFails{condition};
      end = next(end);
      if (!end) return jump(end_of_track);
      claim(end->get_block(), lok);
    }
    count(at_target);
  }

  std::map<Lok*, Train> trains_;
  std::map<Block*, Lok*> holders_;
  std::map<std::pair<Block*, Signal>, std::vector<Watch>> watches_;
  unsigned last_number_ = 0;
  std::array<unsigned, endings> reached_{};
};

}  // namespace zemblar::test
