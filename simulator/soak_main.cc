#include <giomm/init.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "simulator/soak_following.h"
#include "simulator/soak_free.h"

namespace zemblar::simulator {
namespace {

constexpr auto usage = R"(Usage: zemblar-soak [OPTION ...] [HOURS]
Simulated trains under block control, for HOURS (1) of simulated time in each of two runs:

  following  one after another on a ring that is wired as block control needs it: no train may
             enter another's block, and every train keeps moving
  free       at random over points, a dead end and a crossing, with reversals, half of the time
             with false reports: every collision and every standstill must have a cause that
             docs/block-control.md lists

  --only following|free
  --seed N   the same again (1)
)";

struct Options {
  double hours = 1;
  std::uint64_t seed = 1;
  std::string only{};
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

/// Impossible reports reach these assertions of block control.
constexpr std::array expected_assertions{"front != front_", "back != front_", "back != back_",
                                         "front != back_"};
constexpr double part_hours = 10;
constexpr std::string_view result_mark = "result ";

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
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    std::cout.flush();
    const auto child = ::fork();
    if (child < 0) throw std::runtime_error("no process");
    if (child == 0) {
      ::close(ends[0]);
      report(part, ends[1]);
    }
    ::close(ends[1]);
    const auto said = read_all(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    judge(said, WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }

  [[noreturn]] static void report(const FreeOptions& part, int to) {
    ::dup2(to, STDERR_FILENO);
    for (const auto& [cause, count] : run_free(part)) {
      std::cerr << result_mark << static_cast<int>(cause) << ' ' << count << '\n';
    }
    ::_exit(0);
  }

  static std::string read_all(int from) {
    std::string all;
    std::array<char, 4096> buffer;
    for (;;) {
      const auto count = ::read(from, buffer.data(), buffer.size());
      if (count <= 0) break;
      all.append(buffer.data(), static_cast<std::size_t>(count));
    }
    ::close(from);
    return all;
  }

  void judge(const std::string& said, bool ended_well) {
    std::istringstream lines(said);
    for (std::string line; std::getline(lines, line);) {
      if (!line.starts_with(result_mark)) {
        std::cerr << line << '\n';
        continue;
      }
      std::istringstream values(line.substr(result_mark.size()));
      int cause = 0;
      unsigned count = 0;
      values >> cause >> count;
      causes_[static_cast<Cause>(cause)] += count;
    }
    if (ended_well) return;
    const bool expected = std::ranges::any_of(expected_assertions, [&](const std::string text) {
      return said.find("`" + text + "'") != std::string::npos;
    });
    expected ? ++assertions_ : good_ = false;
  }

  Causes causes_;
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
    } else if (argument == "--only" && i + 1 < argc) {
      options.only = argv[++i];
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
  // Free running first: its parts are copies of this process, which should still be a small one.
  const bool free = timed(options, "free", [](const auto& o) { return run_freely(o); });
  const bool following =
      timed(options, "following", [](const auto& o) { return run_following(o); });
  return free && following ? 0 : 1;
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
