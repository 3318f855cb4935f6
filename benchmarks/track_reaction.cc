// What it costs to follow trains: a reaction must not notice how large the railway is.

#include "benchmarks/ratio.h"
#include "benchmarks/track_scene.h"

namespace zemblar::bench {
namespace {

constexpr std::size_t many = 10000;
constexpr std::size_t few = 10;

/// A locomotive runs forth and back between two blocks in the middle, head and tail.
struct Shuttle {
  explicit Shuttle(std::size_t count) {
    const auto zones = row_of_zones(count);
    here = zones[count / 2];
    there = zones[count / 2 + 1];
    auto* lok = Layout::get().get_loks().add(new Lok);
    detector_of(here).occupy(true);
    lok->detected(&here->right, &here->left, true);
  }
  /// The head enters a block and leaves it again.
  void run() const {
    detector_of(there).occupy(true);
    detector_of(there).occupy(false);
  }
  /// Nobody moves: the block that the train stands in reports again.
  void report() const { detector_of(here).occupy(true); }

  Zone* here;
  Zone* there;
};

/// Nanoseconds in a railway that is made for it. There is one document at a time.
template <typename Act>
double in_railway_of(std::size_t count, std::size_t times, const Act& act) {
  const Shuttle shuttle(count);
  return nanoseconds(times, [&] { act(shuttle); });
}

template <typename Act>
Figure reaction(const char* name, const Act& act) {
  return Figure(name, "ns", 1.3, [act](Effort effort) -> Round {
    const auto times = effort.count(20000);
    return [act, times] {
      Sample sample;
      sample.floor = in_railway_of(few, times, act);
      sample.figure = in_railway_of(many, times, act);
      return sample;
    };
  });
}

const Figure moving = reaction("track: head moves on and back, 10,000 blocks to 10",
                               [](const Shuttle& shuttle) { shuttle.run(); });
const Figure standing = reaction("track: a report that moves nobody, 10,000 blocks to 10",
                                 [](const Shuttle& shuttle) { shuttle.report(); });

/// The same walk over nothing but pointers, from one end of a block to the next block's.
struct BareEnd {
  BareEnd* opposite = nullptr;
  BareEnd* partner = nullptr;
};

struct Walk {
  static constexpr std::size_t length = 1000;

  Walk() : zones(row_of_zones(length)), ends(2 * length) {
    for (std::size_t i = 0; i < ends.size(); i += 2) {
      ends[i].opposite = &ends[i + 1];
      if (i + 2 < ends.size()) ends[i + 1].partner = &ends[i + 2];
    }
  }
  void walk() const { keep(zones.front()->right.distance_to(&zones.back()->right)); }
  void chase() const {
    unsigned count = 0;
    const auto* target = &ends.back();
    for (const auto* end = &ends[1]; end && end != target; ++count) {
      end = end->partner ? end->partner->opposite : nullptr;
    }
    keep(count);
  }

  std::vector<Zone*> zones;
  std::vector<BareEnd> ends;
};

const Figure walking("track: walk over 1,000 blocks, to following bare pointers", "ns", 4.0,
                     [](Effort effort) {
                       auto scene = std::make_shared<Walk>();
                       const auto times = effort.count(2000);
                       return [scene, times] {
                         return versus(
                             times, [&] { scene->walk(); }, [&] { scene->chase(); });
                       };
                     });

}  // namespace
}  // namespace zemblar::bench
