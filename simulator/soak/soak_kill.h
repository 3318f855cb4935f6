#pragma once

#include <cstdint>
#include <string>

namespace zemblar::simulator {

struct KillOptions {
  unsigned moments = 500;
  std::uint64_t seed = 1;
};

struct KillResult {
  unsigned saves = 0;        ///< saves that were confirmed before the kills
  unsigned interrupted = 0;  ///< kills during a save
  std::string trouble;       ///< what was lost, or left over; empty for nothing
};

/// Kills a process at random moments. The process changes a layout, saves it to three files, also
/// under the name of another file and to a file with two hard links, and writes recovery copies.
///
/// After each kill every file must hold the last confirmed state, or the one that was being saved,
/// with all objects, or the next start must offer it. The next start leaves no other files.
[[nodiscard]] KillResult run_kills(const KillOptions& options);

}  // namespace zemblar::simulator
