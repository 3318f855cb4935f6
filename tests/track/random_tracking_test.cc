// Block control on random railways with reversing loops, crossings, scissors and points, compared
// with `PlainTracking` after each event. Reports contradict one another; operators free blocks,
// throw points under trains and change wires and joins; blocks, locomotives, detectors and states
// of points end.
//
// The environment variable ZEMBLAR_TRACKING_RUNS asks for more than 3000 runs. Runs share a process
// in batches, so a crash or an endless walk ends one batch. A failure names the run by its seed,
// and the event.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <random>
#include <stdexcept>

#include "simulator/soak/soak_process.h"
#include "tests/support/small_railway.h"
#include "tests/track/link_names.h"
#include "tests/track/plain_tracking.h"
#include "track/crossing.h"
#include "track/point.h"
#include "track/scissor.h"

namespace zemblar::test {
namespace {

// --- Events ---

enum class Kind {
  occupy,
  free,
  see,
  set_way,
  turn,
  brake,
  end_block,
  end_lok,
  end_detector,
  cut,
  join,
  free_up,
  wire
};

/// Numbers are taken modulo what there is.
struct Event {
  Kind kind;
  unsigned a;
  unsigned b;
};
using Events = std::vector<Event>;

/// Mostly what trains do, some of what people do, and rarely what ends things.
Events make_events(unsigned seed) {
  std::mt19937 random(~seed);  // not what the railway is made from
  std::discrete_distribution<int> kind({30, 26, 18, 10, 5, 2, 1, 1, 1, 1, 3, 8, 2});
  Events events(150);
  for (auto& event : events) {
    event = {static_cast<Kind>(kind(random)), static_cast<unsigned>(random()),
             static_cast<unsigned>(random())};
  }
  return events;
}

// --- The railway ---

/// A row of blocks and blocks beside it. The ends that the row leaves are joined at random; a few
/// stay open. Some blocks have no detector, others share one.
class RandomRailway {
 public:
  explicit RandomRailway(unsigned seed) : random_(seed) {
    Layout::get(new Layout).new_document(false);
    add_blocks();
    join_ends();
    for (auto count = 1 + any() % 3; count > 0; --count) add_lok();
  }
  ~RandomRailway() { Layout::get().destroy(); }
  RandomRailway(const RandomRailway&) = delete;
  RandomRailway& operator=(const RandomRailway&) = delete;

  /// The differences after the event; empty if there are none.
  std::string play(const Event& event) {
    complaint_.clear();
    act(event);
    for (auto* lok : loks_) compare(*lok);
    for (auto* block : blocks_) compare(*block);
    return complaint_;
  }

  [[nodiscard]] const PlainTracking& plain() const { return plain_; }

 private:
  unsigned any() { return static_cast<unsigned>(random_()); }

  // --- Building ---

  void add_blocks() {
    add(new Zone, add_detector());
    for (auto count = 2 + any() % 7; count > 0; --count) add(new Zone, some_detector(6));
    for (auto count = any() % 4; count > 0; --count) add(new Point, some_detector(3));
    for (auto count = any() % 3; count > 0; --count) add(new Crossing, some_detector(3));
    for (auto count = any() % 3; count > 0; --count) add(new Scissor, some_detector(3));
  }
  void add(Block* block, Device* input) {
    Layout::get().get_blocks().add(block);
    blocks_.push_back(block);
    block->set_input(input);
  }
  Detector* add_detector() {
    detectors_.push_back(Layout::get().get_devices().add(new Detector));
    return detectors_.back();
  }
  /// A new one; once in `part` times none, and as often one that is there.
  Detector* some_detector(unsigned part) {
    const auto kind = any() % part;
    if (kind == 0) return nullptr;
    return kind == 1 ? detectors_[any() % detectors_.size()] : add_detector();
  }
  void add_lok() { loks_.push_back(Layout::get().get_loks().add(new Lok)); }

  static std::vector<BlockLink*> links_of(Block* block) {
    std::vector<BlockLink*> links;
    for (const auto& name : link_names(*block)) {
      auto* link = block->get_link(name);
      if (link && std::ranges::find(links, link) == links.end()) links.push_back(link);
    }
    return links;
  }
  std::vector<BlockLink*> free_ends() {
    std::vector<BlockLink*> ends;
    for (auto* block : blocks_) {
      for (auto* link : links_of(block)) {
        if (!link->is_connected()) ends.push_back(link);
      }
    }
    return ends;
  }
  void join_ends() {
    const auto in_a_row = any() % (blocks_.size() + 1);
    for (std::size_t i = 1; i < in_a_row; ++i) {
      links_of(blocks_[i])[0]->connect(links_of(blocks_[i - 1])[1]);
    }
    auto ends = free_ends();
    std::ranges::shuffle(ends, random_);
    for (auto open = any() % 4; ends.size() > open + 1; ends.pop_back()) {
      auto* one = ends.back();
      ends.pop_back();
      one->connect(ends.back());
    }
  }

  // --- What happens ---

  void act(const Event& event) {
    auto& block = *blocks_[event.a % blocks_.size()];
    auto& detector = *detectors_[event.a % detectors_.size()];
    auto& lok = *loks_[event.b % loks_.size()];
    switch (event.kind) {
      case Kind::occupy:
      case Kind::free:
        return occupy(detector, event.kind == Kind::occupy);
      case Kind::see:
        return see(detector, lok, event.b / 8 % 4);
      case Kind::set_way:
        return set_way(block, event.b);
      case Kind::turn:
        lok.set_direction(opposite(lok.get_direction()));
        return plain_.turn_round(&lok);
      case Kind::brake:
        lok.set_brake(event.a % 2 == 0);
        return plain_.set_brake(&lok, event.a % 2 == 0);
      case Kind::free_up:
        return replace_lok(block, event.b / 8 % 8 ? nullptr : &lok);
      case Kind::wire:
        return wire(block, event.b % 3 ? detectors_[event.b % detectors_.size()] : nullptr);
      case Kind::cut: {
        const auto links = links_of(&block);
        return links[event.b % links.size()]->disconnect();
      }
      case Kind::join: {
        const auto ends = free_ends();
        if (!ends.empty()) ends[event.a % ends.size()]->connect(ends[event.b % ends.size()]);
        return;
      }
      case Kind::end_block:
        plain_.end(&block);
        std::erase(blocks_, &block);
        block.destroy();
        return add(new Zone, some_detector(6));
      case Kind::end_lok:
        plain_.end(&lok);
        std::erase(loks_, &lok);
        lok.destroy();
        return add_lok();
      case Kind::end_detector:
        if (detectors_.size() == 1) return;
        std::erase(detectors_, &detector);
        return detector.destroy();
    }
  }

  void occupy(Detector& detector, bool on) {
    detector.occupy(on);
    occupied(plain_, detector);
  }
  void occupied(PlainTracking& plain, const Detector& detector) const {
    for (auto* block : blocks_) {
      if (block->get_input() == &detector) plain.emit(block, PlainTracking::Signal::occupied);
    }
  }

  // A report that must end the program is made in a copy of the process only.
  void see(Detector& detector, Lok& lok, unsigned orientation) {
    detector.note(&lok, orientation);
    detector.lose(&lok);
    auto plain = plain_;
    try {
      occupied(plain, detector);
      detected(plain, detector, lok);
    } catch (const PlainTracking::AssertionFails& failed) {
      plain_.count(PlainTracking::asserted);
      const std::string condition = failed.condition;
      const auto outcome = simulator::run_in_process([&] { detector.report(&lok); });
      if (outcome.said.find('`' + condition + '\'') == std::string::npos) {
        complain("does not assert " + condition);
      }
      return;
    }
    plain_ = plain;
    detector.report(&lok);
  }
  void detected(PlainTracking& plain, const Detector& detector, Lok& lok) const {
    const auto orientation = detector.orientation();
    for (auto* block : blocks_) {
      auto* zone = dynamic_cast<Zone*>(block);
      if (!zone || zone->get_input() != &detector || orientation > 2) continue;
      auto* leading = orientation == 2 ? &zone->right : &zone->left;
      plain.detected(&lok, {leading, zone->next_link(leading), orientation != 0});
    }
  }

  // The signals of a detector reach the blocks in the order in which they were attached.
  void wire(Block& block, Detector* detector) {
    if (detector == block.get_input()) return;
    std::erase(blocks_, &block);
    blocks_.push_back(&block);
    block.set_input(detector);
    if (detector) plain_.emit(&block, PlainTracking::Signal::occupied);
  }

  void set_way(Block& block, unsigned number) {
    auto* point = dynamic_cast<PointBase*>(&block);
    if (!point) return;
    const auto* before = point->get_state();
    const auto states = point->states();
    change(*point, *states[number % states.size()], number / 16 % 8 > 0);
    if (point->get_state() != before) plain_.emit(point, PlainTracking::Signal::route);
  }
  void change(PointBase& base, PointState& state, bool only_set) {
    auto* point = dynamic_cast<Point*>(&base);
    if (only_set || !point) {
      base.set_state(&state);
    } else if (state.get_deletable()) {
      plain_.end(point->state_link(&state));
      state.destroy();  // with its link
    } else {
      point->add_state();
    }
  }

  void replace_lok(Block& block, Lok* lok) {
    block.replace_lok(lok);
    plain_.replace_lok(&block, lok);
  }

  // --- What must hold ---

  void complain(const std::string& what) { complaint_ += what + '\n'; }

  void compare(Lok& lok) {
    const auto& train = plain_.train(&lok);
    if (lok.front != train.front) complain(lok.get_name() + ": front");
    if (lok.back != train.back) complain(lok.get_name() + ": back");
    if (lok.orientation_known != train.orientation_known) complain(lok.get_name() + ": known");
    if (lok.get_brake() != train.brake) complain(lok.get_name() + ": brake");
    for (const auto* held : lok.get_blocks()) {
      if (held->get_lok() != &lok) complain(held->get_name() + " does not know its holder");
    }
  }
  void compare(Block& block) {
    using enum PlainTracking::Signal;
    const auto* lok = block.get_lok();
    if (lok != plain_.holder(&block)) complain(block.get_name() + ": holder");
    if (lok && std::ranges::count(lok->get_blocks(), &block) != 1) {
      complain(block.get_name() + " is not known to its holder");
    }
    const std::size_t relayed = 1;  // by the layout's set of all blocks
    if (block.signal_occupied().size() != plain_.watches(&block, occupied) + relayed ||
        block.signal_route().size() != plain_.watches(&block, route)) {
      complain(block.get_name() + ": watches");
    }
  }

  std::mt19937 random_;
  std::vector<Block*> blocks_;
  std::vector<Detector*> detectors_;
  std::vector<Lok*> loks_;
  PlainTracking plain_;
  std::string complaint_;
};

// --- Running ---

/// Outlives the process of a batch.
struct Progress {
  unsigned seed;
  std::size_t event;
  std::array<unsigned, PlainTracking::endings> reached;
};

// In memory that this process shares with its copies.
Progress& progress = *static_cast<Progress*>(
    mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));

/// Throws after the first event that leaves a difference.
void play(unsigned seed, const Events& events) {
  RandomRailway railway(seed);
  for (std::size_t i = 0; i < events.size(); ++i) {
    progress.event = i;
    const auto complaint = railway.play(events[i]);
    if (!complaint.empty()) throw std::runtime_error(complaint);
  }
  auto& total = progress.reached;
  std::ranges::transform(total, railway.plain().reached(), total.begin(), std::plus());
}

/// Plays the runs of these seeds until one fails. An endless walk ends the process. The limit is
/// processor time, which a busy machine does not use up.
simulator::Outcome play_batch(unsigned first, unsigned end) {
  return simulator::run_in_process([=] {
    const rlim_t seconds = 10 + (end - first) / 10;
    const rlimit limit{seconds, seconds};
    setrlimit(RLIMIT_CPU, &limit);
    for (auto seed = first; seed < end; ++seed) {
      progress.seed = seed;
      play(seed, make_events(seed));
    }
  });
}

TEST(RandomTracking, does_what_the_plain_rules_say_on_any_railway) {
  const auto* wanted = std::getenv("ZEMBLAR_TRACKING_RUNS");
  const unsigned runs = wanted ? static_cast<unsigned>(std::atoi(wanted)) : 3000;
  const unsigned batch = 250;
  for (unsigned first = 1; first <= runs; first += batch) {
    const auto outcome = play_batch(first, std::min(first + batch, runs + 1));
    ASSERT_TRUE(outcome.ended_well)
        << "seed " << progress.seed << ", event " << progress.event << ": " << outcome.said;
  }
  constexpr const char* names[] = {"walks to the target",
                                   "jumps before a block held",
                                   "jumps before a block passed in the same walk",
                                   "jumps at the end of the track",
                                   "assertions",
                                   "heads round a circle"};
  for (std::size_t i = 0; i < std::size(names); ++i) {
    const auto count = progress.reached.at(i);
    EXPECT_GT(count, 0u) << names[i];
    std::printf("%u %s in %u runs\n", count, names[i], runs);
  }
}

}  // namespace
}  // namespace zemblar::test
