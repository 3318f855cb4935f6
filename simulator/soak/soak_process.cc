#include "simulator/soak/soak_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <stdexcept>

/// There in a build with sanitizers alone.
extern "C" __attribute__((weak)) int __lsan_do_recoverable_leak_check();

namespace zemblar::simulator {
namespace {

/// Impossible reports reach these assertions of block control.
constexpr std::array expected_assertions{"front != front_", "back != front_", "back != back_",
                                         "front != back_"};

/// What only another thread holds has no holder in a copy of the process, which has no such thread.
bool leaks_can_be_told() {
  const std::filesystem::directory_iterator threads("/proc/self/task");
  return __lsan_do_recoverable_leak_check && std::distance(begin(threads), end(threads)) == 1;
}

[[noreturn]] void run_child(const std::function<void()>& part, int to, bool tells_leaks) {
  ::dup2(to, STDERR_FILENO);
  int status = 0;
  try {
    part();
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    status = 1;
  }
  std::cerr.flush();
  if (tells_leaks && __lsan_do_recoverable_leak_check() != 0) status = 1;
  ::_exit(status);
}

std::string read_all(int from) {
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

}  // namespace

Outcome run_in_process(const std::function<void()>& part) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
  std::cout.flush();
  const auto tells_leaks = leaks_can_be_told();
  const auto child = ::fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) {
    ::close(ends[0]);
    run_child(part, ends[1], tells_leaks);
  }
  ::close(ends[1]);
  Outcome outcome{read_all(ends[0])};
  int status = 0;
  ::waitpid(child, &status, 0);
  outcome.ended_well = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  return outcome;
}

std::vector<std::istringstream> results_of(const Outcome& outcome) {
  std::vector<std::istringstream> results;
  std::istringstream lines(outcome.said);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(result_mark)) {
      results.emplace_back(line.substr(result_mark.size()));
    } else {
      std::cerr << line << '\n';
    }
  }
  return results;
}

bool is_expected_assertion(const Outcome& outcome) {
  return !outcome.ended_well &&
         std::ranges::any_of(expected_assertions, [&](const std::string text) {
           return outcome.said.find("`" + text + "'") != std::string::npos;
         });
}

}  // namespace zemblar::simulator
