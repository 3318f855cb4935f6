#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <vector>

#include "runtime/timer.h"

namespace zemblar::simulator {

class Train;
class TrackDetector;

/// Random numbers, the same for the same seed.
class Chance {
 public:
  explicit Chance(std::uint64_t seed) : engine_(seed) {}

  [[nodiscard]] bool happens(double share) { return share > 0 && fraction() < share; }
  /// 0 to less than 1.
  [[nodiscard]] double fraction() {
    return static_cast<double>(engine_() >> 11) / static_cast<double>(1ull << 53);
  }
  [[nodiscard]] std::chrono::milliseconds between(std::chrono::milliseconds least,
                                                  std::chrono::milliseconds most) {
    const auto range = static_cast<double>((most - least).count() + 1);
    return least + std::chrono::milliseconds(static_cast<long>(range * fraction()));
  }
  /// 0 to less than `count`.
  [[nodiscard]] std::size_t below(std::size_t count) {
    return static_cast<std::size_t>(fraction() * static_cast<double>(count));
  }
  /// One of them, with a probability in proportion to its `weight`.
  template <typename T>
  [[nodiscard]] const T& weighted(const std::vector<T>& all) {
    std::size_t sum = 0;
    for (const auto& one : all) sum += one.weight;
    auto choice = below(sum);
    auto chosen = all.begin();
    for (; choice >= chosen->weight; ++chosen) choice -= chosen->weight;
    return *chosen;
  }

 private:
  std::mt19937_64 engine_;
};

/// The imperfections of detectors. Shares are 0 to 1. The first group is normal for good hardware,
/// the second are faults.
struct SensorOptions {
  using Time = std::chrono::milliseconds;

  Time longest_delay{0};           ///< of a report about occupancy
  double dropouts_per_minute = 0;  ///< of the current, under a moving train
  Time longest_dropout{200};       ///< below TrackInput::hold
  Time answer_interval{400};       ///< between RailCom answers on an input

  double missing = 0;  ///< share of reports about occupancy that get lost
  double doubled = 0;  ///< share that come twice
  double late = 0;     ///< share that come late
  Time late_by{1500};  ///< at most
  double mute = 0;     ///< share of RailCom answers that get lost
};

/// The effect of trains on the detectors of a track: passes current, orientation and encoded
/// RailCom answers to each detector, with realistic delays and imperfections.
///
/// Calls detectors only from timers, so that the consequences of a report never meet a train in an
/// intermediate state. Detectors may end at any time; trains outlive their entries.
class TrackSensors {
 public:
  explicit TrackSensors(std::uint64_t seed);
  ~TrackSensors();

  SensorOptions options;

  /// The orientation of a locomotive at an input: 0 unknown, 1 or 2.
  std::function<unsigned(const Train&, const TrackDetector&)> orientation;

  /// The inputs at which the train draws current from now on, each once, and the one at which its
  /// decoder answers, or null.
  void update(Train& train, std::vector<TrackDetector*> drawing, TrackDetector* answering);

  /// Reports that were lost, doubled or late, and answers lost so far.
  [[nodiscard]] std::uint64_t faults() const { return faults_; }
  /// The last time when a report of the input was falsified; no value if none was.
  [[nodiscard]] std::optional<Clock::time_point> last_fault(const TrackDetector* input) const;

 private:
  struct Feed;
  struct Seen {
    std::vector<TrackDetector*> drawing;
    TrackDetector* answering = nullptr;
  };

  Feed& feed(TrackDetector* input);
  void count(TrackDetector* input, int change);
  void report(Feed& feed, bool on);
  void deliver(Feed& feed);
  void start_chatter(Feed& feed);
  void drop_out(Feed& feed);
  void start_answers(Feed& feed);
  void answer(Feed& feed);
  void note_fault(Feed& feed);

  Chance chance_;
  std::uint64_t faults_ = 0;
  std::map<const TrackDetector*, std::unique_ptr<Feed>> feeds_;
  std::map<const Train*, Seen> seen_;
};

}  // namespace zemblar::simulator
