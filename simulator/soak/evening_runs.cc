#include "simulator/soak/evening_runs.h"

#include <algorithm>
#include <cmath>
#include <iostream>

#include "simulator/soak/soak_process.h"

namespace zemblar::simulator {
namespace {

/// Resident memory after the first quarter of an evening and at its end.
constexpr long allowed_rise = 2048;  // kB

#ifdef __SANITIZE_ADDRESS__
constexpr bool memory_tells = false;  // what was freed is kept for a while
#else
constexpr bool memory_tells = true;
#endif

void tell(const EveningResult& result) {
  for (const auto& [name, count] : result.deeds) {
    std::cerr << result_mark << "deed " << count << ' ' << name << '\n';
  }
  for (const auto& [cause, count] : result.collisions) {
    std::cerr << result_mark << "collision " << count << ' ' << static_cast<int>(cause) << '\n';
  }
  std::cerr << result_mark << "end " << result.travelled << ' ' << result.longest_return.count()
            << ' ' << result.memory_at_end - result.memory_at_quarter << '\n';
  if (!result.trouble.empty()) std::cerr << result_mark << "trouble " << result.trouble << '\n';
}

std::string rest_of(std::istream& values) {
  std::string rest;
  std::getline(values >> std::ws, rest);
  return rest;
}

}  // namespace

void EveningRuns::run(const EveningOptions& evening) {
  judge(evening, run_in_process([&evening] { tell(run_evening(evening)); }));
}

void EveningRuns::judge(const EveningOptions& evening, const Outcome& outcome) {
  std::string trouble = outcome.ended_well ? "" : "the process ended";
  for (auto& values : results_of(outcome)) {
    std::string kind;
    values >> kind;
    const auto found = add(kind, values);
    if (trouble.empty()) trouble = found;
  }
  if (trouble.empty()) return;
  failures_ += "  seed " + std::to_string(evening.seed) + ": " + trouble + '\n';
}

std::string EveningRuns::add(const std::string& kind, std::istream& values) {
  unsigned count = 0;
  if (kind == "trouble") return rest_of(values);
  if (kind == "deed") {
    values >> count;
    deeds_[rest_of(values)] += count;
  } else if (kind == "collision") {
    int cause = 0;
    values >> count >> cause;
    collisions_[static_cast<Cause>(cause)] += count;
  } else if (kind == "end") {
    double travelled = 0;
    long longest = 0, rise = 0;
    values >> travelled >> longest >> rise;
    travelled_ += travelled;
    longest_return_ = std::max(longest_return_, std::chrono::milliseconds(longest));
    most_rise_ = std::max(most_rise_, rise);
    if (memory_tells && rise > allowed_rise) {
      return "memory has risen by " + std::to_string(rise) + " kB";
    }
  }
  return {};
}

void EveningRuns::print(std::ostream& out) const {
  out << "  " << std::lround(travelled_) << " m, all told again after " << longest_return_.count()
      << " ms, memory risen by " << most_rise_ << " kB at most\n";
  for (const auto& [name, count] : deeds_) out << "  " << count << "  " << name << '\n';
  out << "  collisions:\n";
  for (const auto& [cause, count] : collisions_) {
    out << "  " << count << "  " << title(cause) << '\n';
  }
  out << failures_;
}

}  // namespace zemblar::simulator
