// Block control under whatever a railway can do to it, in any order.
//
// Each seed runs in a process of its own: an endless walk or a dangling pointer ends that one, and
// the assertions that impossible reports reach are expected there. The events of a seed that fails
// are shrunk to a short list, which is printed.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <random>
#include <set>

#include "tests/support/small_railway.h"
#include "track/crossing.h"
#include "track/point.h"
#include "track/scissor.h"

namespace zemblar::test {
namespace {

enum class Kind {
  occupy,
  free,
  see,
  lose,
  gate,
  turn,
  brake,
  end_block,
  end_lok,
  cut,
  join,
  free_up
};

/// Numbers are taken modulo what there is, so that any part of a list is a list.
struct Event {
  Kind kind;
  unsigned a;
  unsigned b;
};
using Events = std::vector<Event>;

constexpr const char* kind_names[] = {"occupy", "free",      "see",     "lose", "gate", "turn",
                                      "brake",  "end block", "end lok", "cut",  "join", "free up"};

/// Mostly what trains do, some of what people do, and rarely what ends things.
Events make_events(unsigned seed, unsigned count) {
  std::mt19937 random(seed);
  std::discrete_distribution<int> kind({30, 26, 14, 5, 9, 6, 2, 1, 1, 1, 3, 2});
  Events events(count);
  for (auto& event : events) {
    event = {static_cast<Kind>(kind(random)), static_cast<unsigned>(random()),
             static_cast<unsigned>(random())};
  }
  return events;
}

/// A passing loop in a ring with a spur and a crossing; some blocks have no detector, two share
/// one.
class Playground {
 public:
  explicit Playground(unsigned seed) : random_(seed) {
    Layout::get(new Layout).new_document(false);
    for (unsigned i = 0; i < zone_count; ++i) add_zone();
    for (unsigned i = 0; i < gate_count; ++i) add(new Gate);
    for (unsigned i = 0; i < point_count; ++i) add(new Point);
    add(new Crossing);
    add(new Scissor);
    for (unsigned i = 0; i + 1 < zone_count + gate_count + point_count; ++i) join(i, i + 1);
    for (unsigned i = 0; i < 8; ++i) {
      const auto one = any();
      join(one, any());
    }
    for (unsigned i = 0; i < lok_count; ++i) add_lok();
  }

  /// What is wrong after the event; empty when all is well.
  std::string play(const Event& event) {
    complaint_.clear();
    event_ = event.kind;
    act(event);
    check_pointers();
    check_watches();
    return complaint_;
  }

  // What may be left behind, counted.
  unsigned stale_watches = 0;
  /// Places whose one end does not lead to the other any more.
  [[nodiscard]] unsigned unwalkable() const {
    return static_cast<unsigned>(std::ranges::count_if(loks_, [](const Lok* lok) {
      if (!lok->front) return false;
      const auto* far = lok->back->get_opposite();
      return !far || !far->find_distance_to(lok->front);
    }));
  }
  [[nodiscard]] unsigned held_behind() const {
    unsigned count = 0;
    for (const auto* lok : loks_)
      count += lok->front ? 0 : static_cast<unsigned>(lok->get_blocks().size());
    return count;
  }

 private:
  static constexpr unsigned zone_count = 9;
  static constexpr unsigned gate_count = 1;
  static constexpr unsigned point_count = 3;
  static constexpr unsigned lok_count = 3;
  /// How many handlers a block's two signals have, occupied and route.
  using Watches = std::map<const Block*, std::pair<int, int>>;
  using Assignment = std::map<const Lok*, Watches>;

  unsigned any() { return static_cast<unsigned>(random_()); }

  // --- Building ---

  void add(Block* block) {
    Layout::get().get_blocks().add(block);
    blocks_.push_back(block);
  }
  void add_zone() {
    auto* zone = new Zone;
    add(zone);
    const auto kind = any() % 6;
    if (kind == 0) return;
    if (kind == 1 && !detectors_.empty()) {
      zone->set_input(detectors_.back());
      return;
    }
    detectors_.push_back(Layout::get().get_devices().add(new Detector));
    zone->set_input(detectors_.back());
  }
  void add_lok() {
    auto* lok = Layout::get().get_loks().add(new Lok);
    loks_.push_back(lok);
    lok->signal_brake_changed().connect(sigc::track_obj([this, lok] { on_brake(*lok); }, *lok));
  }
  static std::vector<BlockLink*> links_of(Block* block) {
    std::vector<BlockLink*> links;
    std::vector<std::string> names{"left",        "right",        "top-left", "top-right",
                                   "bottom-left", "bottom-right", "common"};
    for (const auto* child : *block) names.push_back("state:" + child->get_name());
    for (const auto& name : names) {
      auto* link = block->get_link(name);
      if (link && std::ranges::find(links, link) == links.end()) links.push_back(link);
    }
    return links;
  }
  /// Free ends only, as everybody who joins links does.
  void join(unsigned a, unsigned b) {
    const auto free_end = [this](unsigned n) -> BlockLink* {
      for (auto* link : links_of(blocks_[n % blocks_.size()])) {
        if (!link->is_connected()) return link;
      }
      return nullptr;
    };
    auto* one = free_end(a);
    auto* other = free_end(b);
    if (one && other && one != other) one->connect(other);
  }

  // --- What happens ---

  void act(const Event& event) {
    auto& block = *blocks_[event.a % blocks_.size()];
    auto& detector = *detectors_[event.a % detectors_.size()];
    auto& lok = *loks_[event.b % loks_.size()];
    switch (event.kind) {
      case Kind::occupy:
        return detector.occupy();
      case Kind::free:
        return detector.occupy(false);
      case Kind::see:
        return detector.see(&lok, event.b / 8 % 4);
      case Kind::lose:
        return detector.lose(&lok);
      case Kind::turn:
        return lok.set_direction(opposite(lok.get_direction()));
      case Kind::brake:
        return lok.set_brake(event.a % 2 == 0);
      case Kind::join:
        return join(event.a, event.b);
      case Kind::free_up:
        return block.replace_lok(event.b % 3 ? nullptr : &lok);
      case Kind::gate:
        return set_way(block, event.b);
      case Kind::cut: {
        const auto links = links_of(&block);
        links[event.b % links.size()]->disconnect();
        return;
      }
      case Kind::end_block:
        std::erase(blocks_, &block);
        block.destroy();
        forget(&block);
        return add_zone();
      case Kind::end_lok:
        std::erase(loks_, &lok);
        for (auto* each : detectors_) each->lose(&lok);
        lok.destroy();
        forget(&lok);
        return add_lok();
    }
  }

  static void set_way(Block& block, unsigned number) {
    if (auto* gate = dynamic_cast<Gate*>(&block)) gate->set_open(!gate->open);
    auto* point = dynamic_cast<PointBase*>(&block);
    if (!point) return;
    const auto states = point->states();
    auto* state = states[number % states.size()];
    if (number / 16 % 8 > 0) {
      point->set_state(state);
    } else if (state->get_deletable()) {
      state->destroy();  // with its link
    } else if (!point->has_fixed_states()) {
      point->add_state();
    }
  }

  /// Another one may get the same memory.
  void forget(const Object* gone) {
    std::set<Assignment> rest;
    for (auto assignment : assignments_) {
      std::erase_if(assignment, [gone](const auto& entry) { return entry.first == gone; });
      for (auto& [lok, watches] : assignment) {
        std::erase_if(watches, [gone](const auto& entry) { return entry.first == gone; });
      }
      rest.insert(assignment);
    }
    assignments_ = rest;
  }

  // --- What must hold ---

  void complain(const std::string& what) {
    if (complaint_.empty()) complaint_ = what;
  }

  void check_pointers() {
    for (const auto* lok : loks_) {
      if (!lok->front != !lok->back) complain("one end of a place is missing");
      for (const auto* end : {lok->front, lok->back}) {
        if (end && std::ranges::find(blocks_, end->get_block()) == blocks_.end()) {
          complain("an end in a block that has gone");
        }
      }
      for (const auto* block : lok->get_blocks()) {
        if (block->get_lok() != lok) complain("a block that does not know its holder");
      }
    }
    for (const auto* block : blocks_) {
      const auto* lok = block->get_lok();
      if (!lok) continue;
      if (std::ranges::find(loks_, lok) == loks_.end()) {
        complain("held by a locomotive that has gone");
      } else if (std::ranges::count(lok->get_blocks(), block) != 1) {
        complain("a holder that does not know its block");
      }
    }
  }

  /// The brake rises before a block that another one holds, and when a point is set with nothing
  /// free ahead.
  void on_brake(const Lok& lok) {
    if (!lok.get_brake() || event_ == Kind::brake) return;
    const auto* ahead =
        lok.front && lok.front->get_partner() ? lok.front->get_partner()->get_block() : nullptr;
    const bool held = ahead && ahead->get_lok() && ahead->get_lok() != &lok;
    const bool blocked = !ahead || ahead->occupied();
    if (!held && !(event_ == Kind::gate && blocked)) complain("braked without a reason");
  }

  static Watches watches_of(BlockLink* front, BlockLink* back) {
    Watches watches;
    if (!front || !back) return watches;
    CircleGuard guard;
    auto* rear = back;
    while (!rear->get_block()->has_input()) {
      auto* far = rear->get_opposite();
      if (far == front) break;
      rear = far ? far->get_partner() : nullptr;
      if (!rear || guard.came_round(rear)) return watches;
    }
    ++watches[front->get_block()].first;
    ++watches[rear->get_block()].first;
    for (const auto* end : {front, back}) {
      if (!end->get_partner()) continue;
      auto& [occupied, route] = watches[end->get_partner()->get_block()];
      ++occupied;
      ++route;
    }
    return watches;
  }

  [[nodiscard]] Watches actual_watches() const {
    Watches actual;
    const int relayed = 1;  // by the layout's set of all blocks
    for (auto* block : blocks_) {
      const std::pair handlers(static_cast<int>(block->signal_occupied().size()) - relayed,
                               static_cast<int>(block->signal_route().size()));
      if (handlers != std::pair(0, 0)) actual[block] = handlers;
    }
    return actual;
  }

  /// What each locomotive may watch now, if it watched that before: what its last `reconnect`
  /// found, which is what its place gives now, or gave before its ends were exchanged, or nothing
  /// new.
  std::vector<Assignment> successors(const Assignment& before) const {
    std::vector<Assignment> all{{}};
    for (const auto* lok : loks_) {
      std::vector<Watches> choices{watches_of(lok->front, lok->back)};
      const auto old = before.find(lok);
      if (lok->front) {  // who has no place watches nothing
        choices.push_back(watches_of(lok->back, lok->front));
        if (old != before.end()) choices.push_back(old->second);
      }
      std::vector<Assignment> longer;
      for (const auto& assignment : all) {
        for (const auto& choice : choices) {
          longer.push_back(assignment);
          longer.back()[lok] = choice;
        }
      }
      all = longer;
    }
    return all;
  }

  /// Only sums can be seen, so all that they allow is kept.
  void check_watches() {
    const auto actual = actual_watches();
    std::set<Assignment> possible;
    for (const auto& before : assignments_) {
      for (const auto& assignment : successors(before)) {
        Watches sum;
        for (const auto& [lok, watches] : assignment) {
          for (const auto& [block, handlers] : watches) {
            sum[block].first += handlers.first;
            sum[block].second += handlers.second;
          }
        }
        if (sum == actual) possible.insert(assignment);
      }
    }
    if (possible.empty()) complain("watches that no reconnect has made");
    assignments_ = possible;
    for (const auto* lok : loks_) {
      const auto now = watches_of(lok->front, lok->back);
      stale_watches += std::ranges::none_of(
          possible, [&](const auto& assignment) { return assignment.at(lok) == now; });
    }
  }

  std::mt19937 random_;
  std::vector<Block*> blocks_;
  std::vector<Detector*> detectors_;
  std::vector<Lok*> loks_;
  std::set<Assignment> assignments_{{}};
  Kind event_ = Kind::occupy;
  std::string complaint_;
};

// --- Running ---

struct Outcome {
  std::string problem;  // empty: fine
  bool asserted = false;
  unsigned stale_watches = 0;
  unsigned held_behind = 0;
  unsigned unwalkable = 0;
};

[[noreturn]] void run_in_child(unsigned seed, const Events& events, int report) {
  // An endless walk. Processor time, so that a busy machine is not taken for one.
  const rlimit seconds{60, 60};
  setrlimit(RLIMIT_CPU, &seconds);
  dup2(report, STDERR_FILENO);
  Playground playground(seed);
  for (std::size_t i = 0; i < events.size(); ++i) {
    if (const auto problem = playground.play(events[i]); !problem.empty()) {
      dprintf(report, "after event %zu: %s", i, problem.c_str());
      _exit(1);
    }
  }
  dprintf(report, "%u %u %u", playground.stale_watches, playground.held_behind(),
          playground.unwalkable());
  _exit(0);
}

/// The four that reports from a track that has changed under a train can reach.
bool is_expected_assertion(const std::string& text) {
  for (const auto* condition :
       {"front != front_", "back != front_", "back != back_", "front != back_"}) {
    if (text.find(std::string("Assertion `") + condition + "' failed") != std::string::npos)
      return true;
  }
  return false;
}

Outcome run(unsigned seed, const Events& events) {
  int ends[2];
  if (pipe(ends) != 0) return {"no pipe"};
  fflush(nullptr);
  const auto child = fork();
  if (child == 0) run_in_child(seed, events, ends[1]);
  close(ends[1]);
  std::string text;
  char buffer[4096];
  for (ssize_t got = 0; (got = read(ends[0], buffer, sizeof buffer)) > 0;) {
    text.append(buffer, static_cast<std::size_t>(got));
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  Outcome outcome;
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
    std::sscanf(text.c_str(), "%u %u %u", &outcome.stale_watches, &outcome.held_behind,
                &outcome.unwalkable);
  } else if (WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT && is_expected_assertion(text)) {
    outcome.asserted = true;
  } else {
    outcome.problem = WIFSIGNALED(status) ? strsignal(WTERMSIG(status)) + (": " + text) : text;
  }
  return outcome;
}

/// Leaves out whatever the failure does without, in ever smaller pieces.
Events shrink(unsigned seed, Events events) {
  for (std::size_t piece = events.size() / 2; piece > 0; piece /= 2) {
    for (std::size_t at = 0; at < events.size();) {
      auto fewer = events;
      const auto first = fewer.begin() + static_cast<std::ptrdiff_t>(at);
      fewer.erase(first, first + static_cast<std::ptrdiff_t>(std::min(piece, events.size() - at)));
      if (run(seed, fewer).problem.empty()) {
        at += piece;
      } else {
        events = fewer;
      }
    }
  }
  return events;
}

std::string described(const Events& events) {
  std::string text;
  for (const auto& event : events) {
    text += Glib::ustring::compose("  %1 %2 %3\n", kind_names[static_cast<int>(event.kind)],
                                   event.a, event.b);
  }
  return text;
}

TEST(RandomTracking, keeps_its_invariants_whatever_happens) {
  const unsigned seeds = 100;
  const unsigned events_each = 500;
  Outcome total;
  unsigned asserted = 0;
  for (unsigned seed = 1; seed <= seeds; ++seed) {
    const auto events = make_events(seed, events_each);
    const auto outcome = run(seed, events);
    asserted += outcome.asserted;
    total.stale_watches += outcome.stale_watches;
    total.held_behind += outcome.held_behind;
    total.unwalkable += outcome.unwalkable;
    ASSERT_EQ(outcome.problem, "") << "seed " << seed << ", shrunk to\n"
                                   << described(shrink(seed, events));
  }
  std::printf(
      "%u seeds: %u ended by an assertion, %u stale watches; at the end %u blocks held behind and "
      "%u broken spans\n",
      seeds, asserted, total.stale_watches, total.held_behind, total.unwalkable);
  EXPECT_LT(asserted, seeds / 2);
}

}  // namespace
}  // namespace zemblar::test
