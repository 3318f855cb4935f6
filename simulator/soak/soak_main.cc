#include <giomm/init.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/soak/bus_latency.h"
#include "simulator/soak/evening_runs.h"
#include "simulator/soak/fault_matrix.h"
#include "simulator/soak/lap_runs.h"
#include "simulator/soak/soak_bus.h"
#include "simulator/soak/soak_damage.h"
#include "simulator/soak/soak_following.h"
#include "simulator/soak/soak_free.h"
#include "simulator/soak/soak_kill.h"
#include "simulator/soak/soak_links.h"
#include "simulator/soak/soak_process.h"
#include "source_dir.h"

namespace zemblar::simulator {
namespace {

constexpr auto usage = R"(Usage: zemblar-soak [OPTION ...] [HOURS]
Simulated trains under block control, for HOURS (1) of simulated time in each of these runs:

  following  one after another on a ring that is wired as block control needs it: no train may
             enter another's block, and every train keeps moving
  free       at random over points, a dead end and a crossing, with reversals, half of the time
             with false reports: every collision and every standstill must have a cause that
             docs/block-control.md lists
  bus        with detectors on a simulated Tessara bus that the program's own drivers poll, for a
             twentieth of HOURS each: one after another, and with a bus whose master, readers and
             cable fail at random, all of which must be back in service in time
  links      with an ECoS and a LI-USB, or two ECoS, that fail ten times a minute in each of the ways
             that docs/links.md tells of, for a fiftieth of HOURS unless only this is asked for: no
             wish may be overtaken by an older one, none may be lost
  damage     layouts that are damaged at random, five for each of HOURS, or that many as HOURS says
             when only this is asked for: each is refused with a sentence, or is a whole document,
             without taking more time or memory than an honest one may
  latency    only when asked for: how long it takes from an occupied block ahead of a train to the
             speed 0 at the station, over such a bus; HOURS does not count
  faults     only when asked for: how long stops and points take to stations that fail in each of
             the ways that docs/links.md tells of; HOURS does not count
  kill       only when asked for: a process that saves layouts is killed HOURS times, at random
             moments; nothing may be lost, nothing left over
  laps       only when asked for: the sample layouts as they are shipped, over the program's own
             drivers, an hour for each order in which trains and scripts can be started and for each
             of as many seeds as HOURS says, or that share of an hour for one seed: every train comes
             round ten times an hour, none meets another one, none stands for three minutes
  evening    only when asked for: the sample layout for HOURS (2), as laps has it, with the first
             drive of the README and then somebody who drives, edits, saves and opens at random, while
             station and bus fail: every collision must have a cause that docs/block-control.md
             lists, what was wished arrives in the end, and memory does not rise by more than 2 MB
             after the first quarter

  --only following|free|bus|links|damage|latency|faults|kill|laps|evening
  --layouts FOLDER  other files than those that are shipped, for laps and evening
  --seed N   the same again (1)
  --seeds N  so many evenings, with the seeds from there on (1)
)";

constexpr double evening_hours = 2;  // unless others are asked for

struct Options {
  double hours = 1;
  std::uint64_t seed = 1;
  unsigned seeds = 1;
  std::string only{};
  std::string layouts{ZEMBLAR_SOURCE_DIR "/data/layouts"};
};

template <typename T>
T number(const std::string& text) {
  T value{};
  const auto* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || rest != end || value < 0) {
    throw std::invalid_argument(text + ": a number expected (try --help)");
  }
  return value;
}

// --- Free running: each part in a process of its own ---

constexpr double part_hours = 10;

class FreeRuns {
 public:
  void run(double hours, std::uint64_t seed) {
    for (double left = hours; left > 0; left -= part_hours) {
      const FreeOptions part{
          .hours = std::min(left, part_hours), .seed = seed, .faults = seed % 2 == 0};
      run_part(part);
      ++seed;
    }
  }

  [[nodiscard]] bool good() const { return good_ && !causes_.contains(Cause::unexplained); }

  void print(std::ostream& out) const {
    for (const auto& [cause, count] : causes_) out << "  " << count << "  " << title(cause) << '\n';
    if (assertions_ > 0) out << "  " << assertions_ << "  Assertions after impossible reports\n";
  }

 private:
  void run_part(const FreeOptions& part) {
    judge(run_in_process([&part] {
      for (const auto& [cause, count] : run_free(part)) {
        std::cerr << result_mark << static_cast<int>(cause) << ' ' << count << '\n';
      }
    }));
  }

  void judge(const Outcome& outcome) {
    for (auto& values : results_of(outcome)) {
      int cause = 0;
      unsigned count = 0;
      values >> cause >> count;
      causes_[static_cast<Cause>(cause)] += count;
    }
    if (outcome.ended_well) return;
    is_expected_assertion(outcome) ? ++assertions_ : good_ = false;
  }

  Causes causes_;
  unsigned assertions_ = 0;
  bool good_ = true;
};

// --- Failing buses: each part in a process of its own as well ---

constexpr double bus_part_hours = 1;
constexpr double bus_share = 0.05;  // of the hours: there is a poll every few milliseconds

class BusRuns {
 public:
  void run(double hours, std::uint64_t seed) {
    for (double left = hours; left > 0; left -= bus_part_hours) {
      run_part({.hours = std::min(left, bus_part_hours),
                .seed = seed,
                .readers = 1 + static_cast<unsigned>(seed % most_readers)});
      ++seed;
    }
  }

  [[nodiscard]] bool good() const { return good_; }

  void print(std::ostream& out) const {
    for (const auto& [name, count] : faults_) {
      out << "  " << count.times << "  " << name << ", back after " << count.longest_return.count()
          << " ms\n";
    }
    if (assertions_ > 0) out << "  " << assertions_ << "  Assertions after impossible reports\n";
  }

 private:
  static constexpr unsigned most_readers = 4;

  void run_part(const BusFaultOptions& part) {
    judge(run_in_process([&part] {
      const auto result = run_bus_faults(part);
      for (const auto& [name, count] : result.faults) {
        std::cerr << result_mark << count.times << ' ' << count.longest_return.count() << ' '
                  << name << '\n';
      }
      if (!result.trouble.empty()) throw std::runtime_error("FAILED: " + result.trouble);
    }));
  }

  void judge(const Outcome& outcome) {
    for (auto& values : results_of(outcome)) {
      unsigned times = 0;
      long longest = 0;
      std::string name;
      values >> times >> longest >> std::ws;
      std::getline(values, name);
      auto& count = faults_[name];
      count.times += times;
      count.longest_return = std::max(count.longest_return, std::chrono::milliseconds(longest));
    }
    if (outcome.ended_well) return;
    is_expected_assertion(outcome) ? ++assertions_ : good_ = false;
  }

  std::map<std::string, BusFaultCount> faults_;
  unsigned assertions_ = 0;
  bool good_ = true;
};

// --- Failing links: the same ---

constexpr double link_part_hours = 1;
constexpr double link_share = 0.02;  // of the hours, unless links alone are asked for

class LinkRuns {
 public:
  void run(double hours, std::uint64_t seed) {
    for (double left = hours; left > 0; left -= link_part_hours) {
      run_part({.hours = std::min(left, link_part_hours), .seed = seed++});
    }
  }

  [[nodiscard]] bool good() const { return good_; }

  void print(std::ostream& out) const {
    for (const auto& [name, count] : faults_) out << "  " << count << "  " << name << '\n';
    out << "  " << wishes_ << " wishes, " << arrivals_ << " arrivals, " << pauses_
        << " pauses, all in order again after " << longest_ << " ms\n";
  }

 private:
  void run_part(const LinkFaultOptions& part) {
    judge(run_in_process([&part] {
      const auto result = run_link_faults(part);
      std::cerr << result_mark << result.wishes << ' ' << result.arrivals << ' ' << result.pauses
                << ' ' << result.longest_return.count() << '\n';
      for (const auto& [name, count] : result.faults) {
        std::cerr << result_mark << count << ' ' << name << '\n';
      }
      if (!result.trouble.empty()) throw std::runtime_error("FAILED: " + result.trouble);
    }));
  }

  void judge(const Outcome& outcome) {
    good_ = good_ && outcome.ended_well;
    auto results = results_of(outcome);
    if (results.empty()) return;
    std::uint64_t wishes = 0, arrivals = 0, pauses = 0;
    long longest = 0;
    results.front() >> wishes >> arrivals >> pauses >> longest;
    wishes_ += wishes;
    arrivals_ += arrivals;
    pauses_ += pauses;
    longest_ = std::max(longest_, longest);
    for (std::size_t i = 1; i < results.size(); ++i) {
      auto& line = results[i];
      unsigned count = 0;
      std::string name;
      line >> count >> std::ws;
      std::getline(line, name);
      faults_[name] += count;
    }
  }

  std::map<std::string, unsigned> faults_;
  std::uint64_t wishes_ = 0;
  std::uint64_t arrivals_ = 0;
  std::uint64_t pauses_ = 0;
  long longest_ = 0;
  bool good_ = true;
};

// --- Damaged layouts: some at a time in a process ---

constexpr unsigned damage_part = 50;
constexpr double damages_per_hour = 5;  // unless they alone are asked for

class DamageRuns {
 public:
  void run(unsigned count, std::uint64_t seed) {
    const auto end = seed + count;
    while (seed < end) {
      const auto part = static_cast<unsigned>(std::min<std::uint64_t>(damage_part, end - seed));
      seed = run_part({.seed = seed, .count = part});
    }
  }

  [[nodiscard]] bool good() const { return good_; }

  void print(std::ostream& out) const {
    out << "  " << opened_ << " opened, " << refused_ << " refused, none in more than " << longest_
        << " ms or " << most_memory_ << " times the memory of an honest one\n";
    if (assertions_ > 0) out << "  " << assertions_ << "  Assertions after impossible reports\n";
  }

 private:
  /// The seed to go on with: behind one that has ended the process.
  std::uint64_t run_part(const DamageOptions& part) {
    const auto outcome = run_in_process([&part] {
      const auto result = run_damage(part, [](std::uint64_t seed) {
        std::cerr << result_mark << "seed " << seed << std::endl;
      });
      std::cerr << result_mark << "all " << result.opened << ' ' << result.refused << ' '
                << result.longest.count() << ' ' << result.most_memory << '\n';
    });
    auto results = results_of(outcome);
    std::uint64_t last = part.seed;
    bool complete = false;
    for (auto& line : results) {
      std::string what;
      line >> what;
      if (what == "seed") line >> last;
      if (what == "all") add(line), complete = true;
    }
    if (!outcome.ended_well) {
      is_expected_assertion(outcome) ? ++assertions_ : good_ = false;
      std::cerr << "ended at seed " << last << '\n';
    }
    return complete ? part.seed + part.count : last + 1;
  }

  void add(std::istringstream& values) {
    unsigned opened = 0, refused = 0;
    long longest = 0;
    double most_memory = 0;
    values >> opened >> refused >> longest >> most_memory;
    opened_ += opened;
    refused_ += refused;
    longest_ = std::max(longest_, longest);
    most_memory_ = std::max(most_memory_, most_memory);
  }

  unsigned opened_ = 0;
  unsigned refused_ = 0;
  long longest_ = 0;
  double most_memory_ = 0;
  unsigned assertions_ = 0;
  bool good_ = true;
};

// --- Program ---

Options read(int argc, char* argv[]) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--seed" && i + 1 < argc) {
      options.seed = number<std::uint64_t>(argv[++i]);
    } else if (argument == "--seeds" && i + 1 < argc) {
      options.seeds = number<unsigned>(argv[++i]);
    } else if (argument == "--only" && i + 1 < argc) {
      options.only = argv[++i];
      if (options.only == "evening") options.hours = evening_hours;
    } else if (argument == "--layouts" && i + 1 < argc) {
      options.layouts = argv[++i];
    } else {
      options.hours = number<double>(argument);
    }
  }
  return options;
}

bool run_following(const Options& options) {
  const auto result = run_following(FollowingOptions{.hours = options.hours, .seed = options.seed});
  std::cout << result.report;
  return result.good;
}

bool run_freely(const Options& options) {
  FreeRuns runs;
  runs.run(options.hours, options.seed);
  std::cout << "free, seeds from " << options.seed << ": " << options.hours << " h\n";
  runs.print(std::cout);
  return runs.good();
}

bool run_over_bus(const Options& options) {
  const double hours = options.hours * bus_share;
  BusRuns runs;
  runs.run(hours, options.seed);
  std::cout << "failing buses, seeds from " << options.seed << ": " << hours << " h\n";
  runs.print(std::cout);
  // A report takes as long as one poll of both readers more.
  const auto result = run_following(
      FollowingOptions{.hours = hours, .seed = options.seed, .shortest_block = 600, .readers = 2});
  std::cout << result.report;
  return runs.good() && result.good;
}

bool run_over_links(const Options& options) {
  const double hours = options.hours * (options.only == "links" ? 1 : link_share);
  LinkRuns runs;
  runs.run(hours, options.seed);
  std::cout << "failing links, seeds from " << options.seed << ": " << hours << " h\n";
  runs.print(std::cout);
  return runs.good();
}

bool run_over_damage(const Options& options) {
  const auto count =
      static_cast<unsigned>(options.hours * (options.only == "damage" ? 1 : damages_per_hour));
  DamageRuns runs;
  runs.run(count, options.seed);
  std::cout << "damaged layouts, seeds from " << options.seed << ": " << count << '\n';
  runs.print(std::cout);
  return runs.good();
}

bool measure_latency(const Options& options) {
  constexpr unsigned samples = 200;
  std::vector<BusLatency> rows;
  for (const unsigned readers : {1, 4, 16}) {
    for (const auto load :
         {Load::quiet, Load::scanning, Load::other_locomotives, Load::every_packet}) {
      rows.push_back(measure_bus_latency(readers, load, samples, options.seed));
    }
  }
  std::cout << "latency, seed " << options.seed << ", " << samples << " samples each\n";
  print(rows, std::cout);
  return std::ranges::all_of(rows, [](const auto& row) { return row.good(); });
}

bool try_faults(const Options& options) {
  constexpr unsigned times = 40;
  const FaultMatrix matrix(times, options.seed);
  std::cout << "faults of links, seed " << options.seed << '\n';
  matrix.print(std::cout);
  return matrix.holds();
}

bool run_killed(const Options& options) {
  const auto moments = static_cast<unsigned>(options.hours);
  const auto result = run_kills({.moments = moments, .seed = options.seed});
  std::cout << "killed while saving, seed " << options.seed << ": " << moments << " times, "
            << result.interrupted << " in the middle of a save; " << result.saves
            << " saves were confirmed\n";
  if (!result.trouble.empty()) std::cout << "  " << result.trouble << '\n';
  return result.trouble.empty();
}

bool run_laps(const Options& options) {
  bool good = true;
  for (const auto& evening : evening_names()) {
    LapRuns runs(options.layouts, evening);
    const auto seeds = std::max(1u, static_cast<unsigned>(options.hours));
    runs.run(seeds, options.seed, std::min(options.hours, 1.0));
    runs.print(std::cout);
    good = good && runs.good();
  }
  return good;
}

bool run_evenings(const Options& options) {
  EveningRuns runs;
  for (unsigned i = 0; i < options.seeds; ++i) {
    runs.run({.folder = options.layouts, .hours = options.hours, .seed = options.seed + i});
  }
  std::cout << "evenings, seeds from " << options.seed << ": " << options.seeds << " of "
            << options.hours << " h\n";
  runs.print(std::cout);
  return runs.good();
}

template <typename Run>
bool timed(const Options& options, const std::string& name, const Run& run) {
  if (!options.only.empty() && options.only != name) return true;
  const auto start = std::chrono::steady_clock::now();
  const bool good = run(options);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  std::cout << (good ? "  passed in " : "  FAILED after ") << taken.count() << " s" << std::endl;
  return good;
}

int main(int argc, char* argv[]) {
  Gio::init();
  if (argc > 1 && argv[1] == std::string("--help")) {
    std::cout << usage;
    return 0;
  }
  const auto options = read(argc, argv);
  if (options.only == "kill") return timed(options, "kill", run_killed) ? 0 : 1;
  if (options.only == "evening") return timed(options, "evening", run_evenings) ? 0 : 1;
  if (options.only == "laps") return timed(options, "laps", run_laps) ? 0 : 1;
  // Free running first: its parts are copies of this process, which should still be a small one.
  const bool free = timed(options, "free", [](const auto& o) { return run_freely(o); });
  const bool bus = timed(options, "bus", [](const auto& o) { return run_over_bus(o); });
  const bool links = timed(options, "links", run_over_links);
  const bool damage = timed(options, "damage", run_over_damage);
  const bool following =
      timed(options, "following", [](const auto& o) { return run_following(o); });
  if (options.only == "latency") return timed(options, "latency", measure_latency) ? 0 : 1;
  if (options.only == "faults") return timed(options, "faults", try_faults) ? 0 : 1;
  return free && bus && links && damage && following ? 0 : 1;
}

}  // namespace
}  // namespace zemblar::simulator

int main(int argc, char* argv[]) {
  try {
    return zemblar::simulator::main(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "zemblar-soak: " << error.what() << '\n';
    return 2;
  }
}
