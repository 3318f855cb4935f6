#include "simulator/soak/soak_following.h"

#include <algorithm>
#include <sstream>

#include "simulator/soak/soak_scene.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

constexpr auto too_long = 5min;
constexpr unsigned slowest = 30;  // speed step
constexpr unsigned fastest = 126;

class FollowingRun {
 public:
  explicit FollowingRun(const FollowingOptions& options)
      : options_(options), scene_(options.seed, options.readers) {
    scene_.model.sensor_options() = {
        .longest_delay = 120ms, .dropouts_per_minute = 6, .longest_dropout = 100ms};
    scene_.model.signal_event().connect([this](const TrackEvent& event) { judge(event); });
    lay_track();
    set_trains();
  }

  SoakResult run() {
    using Hours = std::chrono::duration<double, std::ratio<3600>>;
    const auto start = scene_.clock.now();
    const auto end = start + std::chrono::duration_cast<Clock::duration>(Hours(options_.hours));
    Clock::duration longest{};
    while (scene_.clock.now() < end && trouble_.empty()) {
      scene_.pass(scene_.chance.between(5s, 40s));
      change_a_speed();
      for (const auto& driven : scene_.trains()) {
        longest = std::max(longest, scene_.held_up(driven));
        if (scene_.held_up(driven) > too_long) trouble_ = name(driven) + " does not move";
      }
    }
    return {trouble_.empty(), report(Hours(scene_.clock.now() - start).count(), longest)};
  }

 private:
  void lay_track() {
    std::vector<Zone*> zones;
    for (unsigned i = 0; i < options_.blocks; ++i) {
      const double range = options_.longest_block - options_.shortest_block;
      const double length = options_.shortest_block + range * scene_.chance.fraction();
      zones.push_back(&scene_.add_block<Zone>("Zone " + std::to_string(i + 1), length));
      if (i > 0) zones[i - 1]->right.connect(&zones[i]->left);
    }
    zones.back()->right.connect(&zones.front()->left);
  }

  // Each with a free block ahead. A train that is longer than its block reaches back.
  void set_trains() {
    for (unsigned i = 0; i < options_.trains; ++i) {
      const double length = 300 + 500 * scene_.chance.fraction();
      const double top_speed = 250 + 150 * scene_.chance.fraction();
      scene_.add_train({.name = "Train " + std::to_string(i + 1),
                        .address = {i % 2 ? 1000 + i : 3 + i, i % 2 != 0},
                        .length = length,
                        .top_speed = top_speed});
    }
    std::size_t next = options_.blocks;
    for (auto& driven : scene_.trains()) {
      do {
        if (next == 0) return fail(name(driven) + " finds no place");
        --next;
      } while (!is_free(next + 1) || !scene_.place(driven, zone(next).right));
    }
    if (!is_free(0)) return fail("there are too many trains");
    scene_.pass(3s);
    for (auto& driven : scene_.trains()) {
      if (!driven.lok->front) fail(name(driven) + " has not been seen");
      driven.lok->set_speed(fastest);
    }
  }

  Zone& zone(std::size_t index) {
    return dynamic_cast<Zone&>(*scene_.blocks()[index % options_.blocks]);
  }
  bool is_free(std::size_t index) {
    return std::ranges::none_of(
        scene_.trains(), [&](const auto& driven) { return driven.train->is_in(&zone(index)); });
  }

  void change_a_speed() {
    auto& driven = scene_.trains()[scene_.chance.below(scene_.trains().size())];
    const auto step = slowest + scene_.chance.below(fastest - slowest + 1);
    driven.lok->set_speed(static_cast<unsigned>(step));
  }

  void judge(const TrackEvent& event) {
    const auto& train = event.train->options().name;
    if (event.kind == TrackEvent::Kind::collision) {
      fail(train + " has entered " + event.block->get_name() + " where " +
           event.other->options().name + " is");
    } else if (event.kind == TrackEvent::Kind::ran_off) {
      fail(train + " has come to an end of the track");
    }
  }

  static std::string name(const Driven& driven) { return driven.train->options().name; }
  void fail(const std::string& what) {
    if (trouble_.empty()) trouble_ = what;
  }

  std::string report(double hours, Clock::duration longest) {
    std::ostringstream text;
    text << "following, seed " << options_.seed << ": " << hours << " h, " << options_.trains
         << " trains on " << options_.blocks << " blocks, " << scene_.blocks_entered
         << " blocks entered, longest wait " << longest / 1s << " s";
    if (options_.readers > 0) text << ", over a bus with " << options_.readers << " readers";
    text << '\n';
    if (!trouble_.empty()) text << "  FAILED: " << trouble_ << '\n';
    return text.str();
  }

  FollowingOptions options_;
  SoakScene scene_;
  std::string trouble_;
};

}  // namespace

SoakResult run_following(const FollowingOptions& options) {
  return FollowingRun(options).run();
}

}  // namespace zemblar::simulator
