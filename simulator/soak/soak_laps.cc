#include "simulator/soak/soak_laps.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

#include "core/collections.h"
#include "core/global_options.h"
#include "scripts/script.h"
#include "scripts/script_template.h"
#include "simulator/railway/sample_railway.h"
#include "track/block.h"
#include "track/point_base.h"
#include "track/point_guard.h"
#include "track/point_state.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;
using Hours = std::chrono::duration<double, std::ratio<3600>>;

constexpr auto until_seen = 5s;
constexpr auto longest_pause = 40s;  // between two starts
constexpr auto look_interval = 500ms;
constexpr Seconds longest_stand = 3min;
constexpr double standstill = 1;       // mm
constexpr auto longest_stop = 40s;     // by hand
constexpr unsigned stops_every = 240;  // looks at each train
constexpr unsigned clicks_every = 6;   // looks
constexpr double laps_an_hour = 10;
constexpr unsigned slowest = 60;  // speed step
constexpr unsigned fastest = 126;

/// Something that a person starts: a train by its throttle, or the scripts, which start a train.
constexpr auto third_train = "Goods 1200";

struct Start {
  std::string_view train;
  bool by_scripts = false;
  const char* home = nullptr;  ///< where its laps are counted; null for the block that it starts in
};
using Starts = std::vector<Start>;

struct Evening {
  std::string file;
  Starts starts;
  /// Scripts by these templates take the place of those in the file.
  std::vector<std::string> templates{};
  /// Somebody stops trains, and sets signals and the ways behind them.
  bool has_visitor = false;
  bool in_all_orders = true;
};

Block* block(const char* name) {
  return dynamic_cast<Block*>(Layout::get().get_blocks().find_child(name));
}

PointState* state(const char* point, const char* name) {
  return dynamic_cast<PointState*>(Layout::get().get_points().find_child(point)->find_child(name));
}

/// The exits of the station, each with its way.
struct Exit {
  const char* signal;
  const char* platform;
  const char* way;  // a state of East Point
};
constexpr std::array<Exit, 2> exits{
    {{"Exit Signal 1", "Station 1", "Straight"}, {"Exit Signal 2", "Station 2", "Curved"}}};

/// What a person answers to the questions of the templates, for the sample layout.
std::vector<ScriptTemplate::Answers> answers_to(const std::string& name) {
  auto* ahead = block("East Curve");
  std::vector<ScriptTemplate::Answers> all;
  if (name == "Crossing Guard") {
    all.push_back({{.block = block("Branch Crossing")},
                   {.block = block("East Approach")},
                   {.block = block("North Approach")},
                   {.block = block("South Approach")},
                   {}});
  } else if (name == "Shuttle") {
    all.push_back({{.lok = &SampleRailway::lok("Railcar 5")},
                   {.block = block("Branch North")},
                   {.block = block("North Approach")},
                   {.block = block("Branch South")},
                   {.block = block("South Approach")},
                   {.number = 5},
                   {.number = 60}});
  } else if (name == "Station Stop") {
    all.push_back({{.block = block("Station 1")}, {.block = ahead}, {.number = 6}});
  }
  for (const auto& [signal, platform, way] : exits) {
    auto* stop = state(signal, "Stop");
    auto* go = state(signal, "Go");
    if (name == "Block Signal") all.push_back({{.block = ahead}, {.state = stop}, {.state = go}});
    if (name == "Stop at a Signal") {
      all.push_back({{.block = block(platform)}, {.state = stop}, {.state = go}, {.block = ahead}});
    } else if (name == "Route by Entry Signal") {
      auto* east = state("East Point", way);
      all.push_back(
          {{.state = go}, {.state = east}, {}, {}, {}, {.block = ahead}, {.state = stop}});
    }
  }
  return all;
}

void write_by_templates(const std::vector<std::string>& names) {
  auto& scripts = Layout::get().get_scripts();
  while (scripts.child_count() != 0) scripts.child_at(0)->destroy();
  for (const auto& name : names) {
    const auto& all = script_templates();
    const auto found = std::ranges::find(all, std::string_view(name), &ScriptTemplate::name);
    for (const auto& answers : answers_to(name)) found->make(answers);
  }
}

const std::map<std::string, Evening>& evenings() {
  const Starts line{{"Express 103"}, {"Local 24"}, {third_train}};
  const Starts branch{{"Railcar 5", true}};
  static const std::map<std::string, Evening> all{
      {"sample", {"sample.zblt", {{"Express 103"}, {"Local 24"}, {"Railcar 5", true}}}},
      {"sample, scripts asleep", {"sample.zblt", {{"Express 103"}, {"Local 24"}}}},
      {"sample, scripts by templates",
       {"sample.zblt",
        {{"Express 103"}, {"Local 24"}, {third_train}, {"Railcar 5", true}},
        {"Crossing Guard", "Block Signal", "Stop at a Signal", "Station Stop", "Shuttle"},
        true}},
      {"template Stop at a Signal", {"sample.zblt", line, {"Stop at a Signal"}, true, false}},
      {"template Block Signal", {"sample.zblt", line, {"Block Signal"}, true, false}},
      {"template Shuttle", {"sample.zblt", branch, {"Shuttle"}, true, false}},
      {"template Station Stop", {"sample.zblt", line, {"Station Stop"}, true, false}},
      {"template Route by Entry Signal",
       // The third train is too long to stop before these signals.
       {"sample.zblt",
        {{"Express 103"}, {"Local 24"}},
        {"Route by Entry Signal", "Stop at a Signal"},
        true,
        false}},
      {"club, by scripts",
       {"club.zblt",
        {{"Express 103"},
         {"Local 24"},
         {"Goods 1200", false, "Outer West 2"},
         {"Local 64", false, "Outer West 2"},
         {"Railcar 5", true},
         {"Shunter 3", true},
         {"Goods 44", true, "Valley 2"},
         {"Express 218", true, "Valley 2"}},
        {},
        false,
        false}},
      {"club", {"club.zblt", {{"Express 103"}, {"Local 24"}, {"Goods 1200"}, {"Local 64"}}}}};
  return all;
}

Starts in_order(Starts starts, unsigned order) {
  std::vector<std::size_t> places(starts.size());
  std::iota(places.begin(), places.end(), 0);
  for (; order > 0; --order) std::next_permutation(places.begin(), places.end());
  Starts ordered;
  for (const auto place : places) ordered.push_back(starts[place]);
  return ordered;
}

/// A train that has been started, and what became of it.
struct Started {
  Train* train;
  const Block* home;
  unsigned laps = 0;
  double travelled = 0;
  Clock::time_point moved = Clock::now();
  unsigned stopped_speed = 0;  // before it was stopped by hand
  Clock::time_point goes_on{};
};

class LapsRun {
 public:
  explicit LapsRun(const LapsOptions& options)
      : options_(options),
        evening_(evenings().at(options.evening)),
        chance_(options.seed),
        scene_(options.folder + "/" + evening_.file, options.seed) {
    if (!evening_.templates.empty()) prepare();
    scene_.railway.track.signal_event().connect([this](const TrackEvent& event) { judge(event); });
  }
  ~LapsRun() { GlobalOptions::get().set_points_protected(were_protected_); }
  LapsRun(const LapsRun&) = delete;
  LapsRun& operator=(const LapsRun&) = delete;

  LapsResult run() {
    const auto end =
        scene_.clock.now() + std::chrono::duration_cast<Clock::duration>(Hours(options_.hours));
    for (const auto& start : in_order(evening_.starts, options_.order)) {
      begin(start);
      pass(chance_.between(0s, longest_pause));
    }
    // Until now some may have waited for others that had not been started.
    for (auto& one : started_) one.moved = scene_.clock.now();
    while (scene_.clock.now() < end && result_.trouble.empty()) pass(look_interval);
    count_laps();
    look_for_reservations();
    return result_;
  }

 private:
  // --- The evening ---

  /// The line gets a third train, and scripts by templates.
  void prepare() {
    if (std::ranges::find(evening_.starts, third_train, &Start::train) != evening_.starts.end()) {
      scene_.railway.put(third_train, "East Approach", {.length = 400, .top_speed = 250});
      scene_.clock.advance(until_seen);
    }
    write_by_templates(evening_.templates);
    GlobalOptions::get().set_points_protected(true);
  }
  [[nodiscard]] bool has_template(const char* name) const {
    return std::ranges::count(evening_.templates, name) != 0;
  }

  void begin(const Start& start) {
    auto* train = scene_.railway.find_train(start.train);
    started_.push_back(
        {.train = train,
         .home = start.home ? block(start.home) : train->leading_link()->get_block()});
    if (start.by_scripts) return start_scripts();
    const auto range = fastest - slowest + 1;
    SampleRailway::lok(std::string(start.train))
        .set_speed(slowest + static_cast<unsigned>(chance_.below(range)));
  }

  void pass(std::chrono::milliseconds time) {
    for (; time > 0ms && result_.trouble.empty(); time -= look_interval) {
      scene_.clock.advance(look_interval);
      if (evening_.has_visitor) {
        click();
        stop_by_hand();
      }
      look_at_signal();
      for (auto& one : started_) look(one);
    }
  }

  /// Somebody clicks signals and points, if no script sets them, with the care of a person: nobody
  /// sets another way before a train that is already leaving.
  void click() {
    if (has_template("Block Signal") || chance_.below(clicks_every) != 0) return;
    if (has_template("Route by Entry Signal")) {
      auto* way = state("West Point", chance_.below(2) == 0 ? "Straight" : "Curved");
      set_by_hand(*way->get_owner(), *way, false);
    }
    const auto chosen = chance_.below(exits.size());
    const auto shows_go = [](const Exit& exit) {
      auto* go = state(exit.signal, "Go");
      return go->get_owner()->get_state() == go;
    };
    const auto& exit = exits.at(chosen);
    const bool is_go = shows_go(exit);
    if (is_go ? block(exit.platform)->get_lok() != nullptr : shows_go(exits.at(1 - chosen))) return;
    auto* next = state(exit.signal, is_go ? "Stop" : "Go");
    set_by_hand(*next->get_owner(), *next, false);
  }

  /// A signal that follows its block shows what it should.
  void look_at_signal() {
    if (!has_template("Block Signal")) return;
    const auto* behind = block("East Curve");
    const bool is_taken = behind->get_lok() || behind->occupied();
    for (const auto& exit : exits) {
      auto* shown = state(exit.signal, is_taken ? "Stop" : "Go");
      if (shown->get_owner()->get_state() == shown) continue;
      fail(LapsFault::signal, std::string(exit.signal) + " is wrong");
    }
  }

  /// Somebody stops a train, anywhere, and lets it go on after a while.
  void stop_by_hand() {
    const auto now = scene_.clock.now();
    for (auto& one : started_) {
      auto& lok = SampleRailway::lok(name(one));
      if (lok.get_brake()) continue;  // the decoder would not hear of it
      // A train that has come to the end of its line meanwhile is left to its script.
      const bool has_way = one.train->leading_link()->is_connected();
      if (one.stopped_speed != 0 && now >= one.goes_on) {
        const auto speed = std::exchange(one.stopped_speed, 0);
        if (has_way) lok.set_speed(speed);
      } else if (one.stopped_speed == 0 && lok.get_speed() != 0 && has_way &&
                 chance_.below(stops_every) == 0) {
        one.stopped_speed = lok.get_speed();
        one.goes_on = now + chance_.between(1s, longest_stop);
        lok.set_speed(0);
      }
    }
  }

  void look(Started& one) {
    const double travelled = scene_.railway.track.travelled(*one.train);
    if (travelled - one.travelled > standstill) {
      one.moved = scene_.clock.now();
      one.travelled = travelled;
    }
    const Seconds stood = scene_.clock.now() - one.moved;
    result_.longest_stand = std::max(result_.longest_stand, stood.count());
    if (stood <= longest_stand) return;
    const auto* where = one.train->leading_link()->get_block();
    fail(LapsFault::stands, name(one) + " stands in " + where->get_name().raw());
  }

  void judge(const TrackEvent& event) {
    const auto& train = event.train->options().name;
    const auto where = event.block ? event.block->get_name().raw() : "";
    if (event.kind == TrackEvent::Kind::collision) {
      fail(LapsFault::collision,
           train + " has run into " + event.other->options().name + " in " + where);
    } else if (event.kind == TrackEvent::Kind::ran_off && !event.point_against) {
      fail(LapsFault::ran_off, train + " has come to the end of the track in " + where);
    } else if (event.kind == TrackEvent::Kind::entered) {
      for (auto& one : started_) {
        if (one.train == event.train && one.home == event.block) ++one.laps;
      }
    }
  }

  void count_laps() {
    for (const auto& one : started_) {
      result_.laps[name(one)] = one.laps;
      if (one.laps < laps_an_hour * options_.hours) {
        fail(LapsFault::too_few,
             name(one) + " has come round " + std::to_string(one.laps) + " times");
      }
    }
  }

  /// None outlives the runs of the scripts.
  void look_for_reservations() {
    stop_scripts();
    for (auto* member : Layout::get().get_all_blocks().members()) {
      auto* one = static_cast<Block*>(member);
      if (one->get_reservations().empty()) continue;
      fail(LapsFault::reserved, one->get_name().raw() + " is reserved by no script");
    }
  }

  static const std::string& name(const Started& one) { return one.train->options().name; }

  void fail(LapsFault fault, const std::string& what) {
    if (!result_.trouble.empty()) return;
    result_.fault = fault;
    const auto after = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start_);
    result_.trouble = what + " after " + std::to_string(after.count()) + " s";
  }

  LapsOptions options_;
  const bool were_protected_ = GlobalOptions::get().get_points_protected();
  const Evening& evening_;
  Chance chance_;
  SampleRailway scene_;
  Clock::time_point start_ = Clock::now();
  std::vector<Started> started_;
  LapsResult result_;
};

}  // namespace

std::vector<std::string> evening_names() {
  std::vector<std::string> names;
  for (const auto& [name, evening] : evenings()) names.push_back(name);
  return names;
}

unsigned count_orders(const std::string& evening) {
  unsigned orders = 1;
  if (!evenings().at(evening).in_all_orders) return orders;
  const auto starts = evenings().at(evening).starts.size();
  for (std::size_t i = 2; i <= starts; ++i) orders *= static_cast<unsigned>(i);
  return orders;
}

LapsResult run_laps(const LapsOptions& options) {
  return LapsRun(options).run();
}

}  // namespace zemblar::simulator
