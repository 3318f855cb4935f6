#include "simulator/soak/soak_free.h"

#include <algorithm>
#include <iostream>

#include "simulator/soak/soak_scene.h"
#include "track/crossing.h"
#include "track/point.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

constexpr auto longest_stand = 3min;

class FreeRun {
 public:
  explicit FreeRun(const FreeOptions& options) : options_(options), scene_(options.seed) {
    auto& sensors = scene_.model.sensor_options();
    sensors = {.longest_delay = 120ms, .dropouts_per_minute = 6, .longest_dropout = 100ms};
    if (options.faults) {
      sensors.missing = 0.01;
      sensors.doubled = 0.01;
      sensors.late = 0.01;
      sensors.mute = 0.05;
    }
    scene_.model.signal_event().connect([this](const TrackEvent& event) { judge(event); });
    lay_track();
    set_trains();
  }

  Causes run() {
    using Hours = std::chrono::duration<double, std::ratio<3600>>;
    const auto end =
        scene_.clock.now() + std::chrono::duration_cast<Clock::duration>(Hours(options_.hours));
    while (scene_.clock.now() < end) {
      scene_.pass(scene_.chance.between(1s, 15s));
      bring_back();
      clear_away();
      interfere();
    }
    return causes_;
  }

 private:
  // --- The railway ---

  Zone& add_zone(const char* name) {
    const double length = 700 + 1500 * scene_.chance.fraction();
    zones_.push_back(&scene_.add_block<Zone>(name, length));
    return *zones_.back();
  }
  /// Shares the zone's input, so that it is no block of its own to the detectors.
  Point& add_point(const char* name, const Zone& zone) {
    points_.push_back(&scene_.add_block<Point>(name, 200, &zone));
    return *points_.back();
  }
  static BlockLink& branch(Point& point, unsigned state) {
    return *point.state_link(point.states()[state]);
  }

  // A ring with a passing loop and a dead end, and a second ring that crosses it.
  void lay_track() {
    for (const auto* name : {"A", "B", "C", "D", "E", "F", "G", "H"}) add_zone(name);
    auto& loop = add_zone("Loop");
    auto& spur = add_zone("Spur");
    auto& s = add_zone("S");
    auto& t = add_zone("T");
    auto& u = add_zone("U");
    auto& west = add_point("West", *zones_[1]);
    auto& east = add_point("East", *zones_[3]);
    auto& yard = add_point("Yard", *zones_[4]);
    auto& crossing = scene_.add_block<Crossing>("Crossing", 300, zones_[6]);
    const auto join = [](BlockLink& one, BlockLink& other) { one.connect(&other); };
    join(zones_[0]->right, zones_[1]->left);
    join(zones_[1]->right, west.common);
    join(branch(west, 0), zones_[2]->left);
    join(branch(west, 1), loop.left);
    join(zones_[2]->right, branch(east, 0));
    join(loop.right, branch(east, 1));
    join(east.common, zones_[3]->left);
    join(zones_[3]->right, zones_[4]->left);
    join(zones_[4]->right, yard.common);
    join(branch(yard, 0), zones_[5]->left);
    join(branch(yard, 1), spur.left);
    join(zones_[5]->right, zones_[6]->left);
    join(zones_[6]->right, crossing.links.top_left);
    join(crossing.links.bottom_right, zones_[7]->left);
    join(zones_[7]->right, zones_[0]->left);
    join(crossing.links.top_right, s.left);
    join(s.right, t.left);
    join(t.right, u.left);
    join(u.right, crossing.links.bottom_left);
  }

  void set_trains() {
    for (unsigned i = 0; i < 4; ++i) {
      scene_.add_train({.name = "Train " + std::to_string(i + 1),
                        .address = {3 + 300 * i, i > 0},
                        .length = 300 + 400 * scene_.chance.fraction(),
                        .top_speed = 250 + 150 * scene_.chance.fraction(),
                        .last_vehicle_draws = i > 0});
    }
    bring_back();
  }

  /// Trains beside the track find a place, where one is free on both sides.
  void bring_back() {
    for (auto& driven : scene_.trains()) {
      if (driven.train->on_track()) continue;
      auto& zone = *zones_[scene_.chance.below(zones_.size())];
      if (!free_around(zone)) continue;
      scene_.place(driven, scene_.chance.happens(0.5) ? zone.left : zone.right);
      return;
    }
  }
  static bool free_around(Zone& zone) {
    const auto free = [](const BlockLink& link) {
      const auto* partner = link.get_partner();
      return !partner || (!partner->get_block()->get_lok() && !partner->get_block()->occupied());
    };
    return !zone.get_lok() && !zone.occupied() && free(zone.left) && free(zone.right);
  }

  // --- What people do ---

  void interfere() {
    auto& lok = *scene_.trains()[scene_.chance.below(scene_.trains().size())].lok;
    const double choice = scene_.chance.fraction();
    if (choice < 0.6) {
      lok.set_speed(static_cast<unsigned>(scene_.chance.below(127)));
    } else if (choice < 0.7) {
      lok.set_direction(opposite(lok.get_direction()));
    } else if (choice < 0.9) {
      auto& point = *points_[scene_.chance.below(points_.size())];
      point.set_state(point.states()[scene_.chance.below(2)]);
    }
  }

  // --- What comes of it ---

  void judge(const TrackEvent& event) {
    if (event.kind == TrackEvent::Kind::ran_off) ++causes_[Cause::track_ends];
    if (event.kind != TrackEvent::Kind::collision) return;
    const auto cause = cause_of_collision(scene_.witness, event);
    count(cause, event.train->options().name + " into " + event.block->get_name() + " with " +
                     event.other->options().name);
    ended_.push_back(event.train);
    ended_.push_back(event.other);
  }

  // All are looked at before one is taken away, which lets others go on.
  void clear_away() {
    for (auto& driven : scene_.trains()) {
      if (!driven.train->on_track() || scene_.held_up(driven) < longest_stand) continue;
      if (std::ranges::find(ended_, driven.train) != ended_.end()) continue;
      count(cause_of_stall(scene_.witness, driven),
            driven.train->options().name + " stands in " +
                driven.train->leading_link()->get_block()->get_name());
      ended_.push_back(driven.train);
    }
    for (const auto* train : std::exchange(ended_, {})) scene_.clear_away(*scene_.find(train));
  }

  void count(Cause cause, const std::string& what) {
    ++causes_[cause];
    if (cause != Cause::unexplained) return;
    std::cerr << "seed " << options_.seed << ", " << scene_.clock.now().time_since_epoch() / 1ms
              << " ms: " << what << ", unexplained\n"
              << scene_.describe();
  }

  FreeOptions options_;
  SoakScene scene_;
  std::vector<Zone*> zones_;
  std::vector<Point*> points_;
  std::vector<const Train*> ended_;  // whose journey is over
  Causes causes_;
};

}  // namespace

Causes run_free(const FreeOptions& options) {
  return FreeRun(options).run();
}

}  // namespace zemblar::simulator
