#include "simulator/soak/lap_runs.h"

#include <algorithm>
#include <iostream>

#include "simulator/soak/soak_process.h"
#include "simulator/soak/temporary_home.h"

namespace zemblar::simulator {
namespace {

constexpr unsigned most_failures_told = 12;

const char* title(LapsFault fault) {
  switch (fault) {
    case LapsFault::none:
      return "ended early";
    case LapsFault::collision:
      return "with a collision";
    case LapsFault::stands:
      return "with a train that stands";
    case LapsFault::ran_off:
      return "with a train at the end of the track";
    case LapsFault::too_few:
      return "with too few laps";
    case LapsFault::reserved:
      return "with a block that stays reserved";
    case LapsFault::signal:
      return "with a signal that does not follow";
  }
  return "";
}

}  // namespace

LapRuns::LapRuns(std::string folder, std::string evening)
    : folder_(std::move(folder)), evening_(std::move(evening)) {}

void LapRuns::run(unsigned seeds, std::uint64_t first_seed, double hours) {
  for (auto seed = first_seed; seed < first_seed + seeds; ++seed) {
    for (unsigned order = 0; order < count_orders(evening_); ++order) {
      run_evening(
          {.folder = folder_, .evening = evening_, .hours = hours, .seed = seed, .order = order});
    }
  }
}

void LapRuns::run_evening(const LapsOptions& evening) {
  judge(evening, run_in_process([&evening] {
          const TemporaryHome home;
          const auto result = run_laps(evening);
          std::cerr << result_mark << static_cast<int>(result.fault) << ' ' << result.longest_stand
                    << ' ' << result.trouble << '\n';
          for (const auto& [train, laps] : result.laps) {
            std::cerr << result_mark << laps << ' ' << train << '\n';
          }
        }));
}

void LapRuns::judge(const LapsOptions& evening, const Outcome& outcome) {
  ++runs_;
  auto results = results_of(outcome);
  if (!outcome.ended_well || results.empty()) {
    ++faults_[LapsFault::none];
    return note_failure(evening, "the process ended");
  }
  int fault = 0;
  double stand = 0;
  std::string trouble;
  results.front() >> fault >> stand >> std::ws;
  if (fault != 0) {
    std::getline(results.front(), trouble);
    ++faults_[static_cast<LapsFault>(fault)];
    return note_failure(evening, trouble);
  }
  ++good_;
  longest_stand_ = std::max(longest_stand_, stand);
  for (std::size_t i = 1; i < results.size(); ++i) {
    unsigned laps = 0;
    std::string train;
    results[i] >> laps >> std::ws;
    std::getline(results[i], train);
    const auto [known, is_new] = least_laps_.emplace(train, laps);
    if (!is_new) known->second = std::min(known->second, laps);
  }
}

void LapRuns::note_failure(const LapsOptions& evening, const std::string& trouble) {
  if (runs_ - good_ > most_failures_told) return;
  failures_ += "  seed " + std::to_string(evening.seed) + ", order " +
               std::to_string(evening.order) + ": " + trouble + '\n';
}

void LapRuns::print(std::ostream& out) const {
  out << evening_ << ": " << good_ << " of " << runs_ << " evenings good";
  for (const auto& [fault, count] : faults_) out << ", " << count << ' ' << title(fault);
  out << '\n';
  if (good_ > 0) {
    out << "  in these, the longest stand was " << longest_stand_ << " s; laps at least:";
    for (const auto& [train, laps] : least_laps_) out << ' ' << train << ' ' << laps << ';';
    out << '\n';
  }
  out << failures_;
}

}  // namespace zemblar::simulator
