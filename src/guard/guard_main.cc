// The guard: a process that the program starts, and that switches the track power of every command
// station off when the program ends without taking leave. Its one argument is the descriptor of the
// channel to the program.

#include <unistd.h>

#include <charconv>
#include <csignal>
#include <cstring>
#include <iostream>

#include "guard/guard_notice.h"
#include "guard/guard_process.h"
#include "guard/station_guard.h"

namespace {

constexpr int usage_error = 2;

/// The end of the session or of the program's terminal must not end the guard before the program.
void outlive_program() {
  ::setsid();
  for (const int number : {SIGHUP, SIGINT, SIGTERM, SIGPIPE}) std::signal(number, SIG_IGN);
}

}  // namespace

int main(int argc, char** argv) {
  int channel = -1;
  if (argc == 2) std::from_chars(argv[1], argv[1] + std::strlen(argv[1]), channel);
  if (channel < 0) {
    std::cerr << "zemblar-guard is started by zemblar alone.\n";
    return usage_error;
  }
  outlive_program();
  zemblar::guard::StationGuard guard{zemblar::GuardChannel(channel)};
  const auto end = guard.watch();
  const auto stations = guard.stations();
  if (end == zemblar::guard::End::leave || stations.empty()) return 0;
  zemblar::guard::report(end, zemblar::guard::stop_all(stations));
  return zemblar::GuardProcess::has_stopped;
}
