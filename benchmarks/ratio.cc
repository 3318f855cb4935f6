#include "benchmarks/ratio.h"

#include <giomm/init.h>
#include <sched.h>

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <vector>

#include "runtime/context.h"

namespace zemblar::bench {
namespace {

constexpr std::size_t full_rounds = 31;
constexpr std::size_t quick_rounds = 3;

std::vector<const Figure*>& figures() {
  static std::vector<const Figure*> all;
  return all;
}

struct Options {
  Effort effort;
  std::string only;  // part of the names to measure
  std::string json;  // file to write, or empty
};

struct Result {
  const Figure* figure;
  Sample sample;  // medians, each of its own
  double ratio;   // median of the rounds' ratios

  bool missed() const { return ratio > figure->goal; }
};

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

Result measure(const Figure& figure, Effort effort) {
  const Round round = figure.prepare(effort);
  if (!effort.quick) round();  // warms up
  std::vector<double> ratios, values, floors;
  const std::size_t rounds = effort.quick ? quick_rounds : full_rounds;
  for (std::size_t i = 0; i < rounds; ++i) {
    const Sample sample = round();
    ratios.push_back(sample.figure / sample.floor);
    values.push_back(sample.figure);
    floors.push_back(sample.floor);
  }
  return {&figure, {median(values), median(floors)}, median(ratios)};
}

/// The scheduler moves a process at will, and the next CPU's caches are cold.
void pin_to_one_cpu() {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(static_cast<unsigned>(std::max(0, sched_getcpu())), &set);
  if (sched_setaffinity(0, sizeof set, &set) != 0) std::cerr << "not pinned to one CPU\n";
}

constexpr int name_width = 58;
constexpr int number_width = 11;

void print_heading() {
  std::cout << std::left << std::setw(name_width) << "" << std::right;
  for (const char* title : {"figure", "floor", "unit", "ratio", "goal"}) {
    std::cout << std::setw(number_width) << title;
  }
  std::cout << '\n';
}

void print(const Result& result, bool judge) {
  const auto number = [](double value) -> std::ostream& {
    return std::cout << std::setw(number_width) << std::fixed << std::setprecision(2) << value;
  };
  std::cout << std::left << std::setw(name_width) << result.figure->name << std::right;
  number(result.sample.figure);
  number(result.sample.floor);
  std::cout << std::setw(number_width) << result.figure->unit;
  number(result.ratio);
  number(result.figure->goal);
  std::cout << (judge && result.missed() ? "  MISSED" : "") << std::endl;
}

void write_json(const std::string& path, const std::vector<Result>& results) {
  std::ofstream out(path);
  const char* separator = "[\n";
  for (const Result& result : results) {
    out << separator << "  {\"name\": " << std::quoted(result.figure->name)
        << ", \"figure\": " << result.sample.figure << ", \"floor\": " << result.sample.floor
        << ", \"unit\": " << std::quoted(result.figure->unit) << ", \"ratio\": " << result.ratio
        << ", \"goal\": " << result.figure->goal << '}';
    separator = ",\n";
  }
  out << (results.empty() ? "[]\n" : "\n]\n");
  if (!out.flush()) throw std::runtime_error("cannot write " + path);
}

std::optional<Options> parse(const std::vector<std::string>& arguments) {
  Options options;
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    const bool has_value = argument + 1 != arguments.end();
    if (*argument == "--quick") {
      options.effort.quick = true;
    } else if (*argument == "--json" && has_value) {
      options.json = *++argument;
    } else if (*argument == "--only" && has_value) {
      options.only = *++argument;
    } else {
      return {};
    }
  }
  return options;
}

/// Whether every figure keeps its goal; a quick run does not judge.
bool run(const Options& options) {
  pin_to_one_cpu();
  print_heading();
  std::vector<Result> results;
  for (const Figure* figure : figures()) {
    if (figure->name.find(options.only) == std::string::npos) continue;
    results.push_back(measure(*figure, options.effort));
    print(results.back(), !options.effort.quick);
  }
  if (!options.json.empty()) write_json(options.json, results);
  return options.effort.quick ||
         std::none_of(results.begin(), results.end(), [](const Result& r) { return r.missed(); });
}

}  // namespace

Figure::Figure(std::string the_name, std::string the_unit, double the_goal,
               std::function<Round(Effort)> the_prepare)
    : name(std::move(the_name)),
      unit(std::move(the_unit)),
      goal(the_goal),
      prepare(std::move(the_prepare)) {
  figures().push_back(this);
}

}  // namespace zemblar::bench

int main(int argc, char** argv) {
  using namespace zemblar::bench;
  const auto options = parse({argv + 1, argv + argc});
  if (!options) {
    std::cerr << "usage: zemblar-bench [--quick] [--only PART-OF-NAME] [--json FILE]\n";
    return 2;
  }
  Gio::init();
  zemblar::raise_float_flags();
  try {
    return run(*options) ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 2;
  }
}
