#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <string>

namespace zemblar::bench {

/// How long to measure. A quick run only shows that everything runs.
struct Effort {
  bool quick = false;

  /// Repetitions of something that a full run repeats `full` times.
  std::size_t count(std::size_t full) const { return quick ? 1 + full / 100 : full; }
};

/// What one round has measured: the program's figure, and the floor that it is held against.
struct Sample {
  double figure = 0;
  double floor = 0;
};

/// Measures one round. Holds what it needs for that; it is dropped after the last round.
using Round = std::function<Sample()>;

/// A figure, the floor below it, and how many times the floor it may be at most.
///
/// Both are measured in turn in every round, in one process on one CPU, and the result is the
/// median of the rounds' ratios: what else the machine does then hits both alike.
///
///     static const Figure encode("encode a packet", "ns", 2.0, [](Effort effort) {
///       return [effort] { return versus(effort.count(100000), [] {...}, [] {...}); };
///     });
///
/// Figures register themselves by being constructed with static storage.
struct Figure {
  Figure(std::string name, std::string unit, double goal, std::function<Round(Effort)> prepare);

  std::string name;
  std::string unit;  // of figure and floor
  double goal;
  std::function<Round(Effort)> prepare;  // called once, before the first round
};

/// Nanoseconds that one of `count` calls takes: the fastest of some batches, because on a busy
/// machine others are interrupted.
template <class Body>
double nanoseconds(std::size_t count, Body&& body) {
  const std::size_t batch = count < 100 ? 1 : count / 20;
  double fastest = std::numeric_limits<double>::infinity();
  for (std::size_t done = 0; done < count; done += batch) {
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < batch; ++i) body();
    const std::chrono::duration<double, std::nano> passed =
        std::chrono::steady_clock::now() - start;
    fastest = std::min(fastest, passed.count() / static_cast<double>(batch));
  }
  return fastest;
}

/// A round that times `count` calls of either side.
template <class Body, class Floor>
Sample versus(std::size_t count, Body&& body, Floor&& floor) {
  Sample sample;
  sample.floor = nanoseconds(count, floor);
  sample.figure = nanoseconds(count, body);
  return sample;
}

/// Makes the compiler believe that `value` is looked at.
template <class T>
void keep(const T& value) {
  asm volatile("" : : "r,m"(value) : "memory");
}

}  // namespace zemblar::bench
