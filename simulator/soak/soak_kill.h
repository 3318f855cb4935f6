#pragma once

#include <cstdint>
#include <string>

namespace zemblar::simulator {

struct KillOptions {
  unsigned moments = 500;
  std::uint64_t seed = 1;
};

struct KillResult {
  unsigned saves = 0;        ///< that were confirmed before the kills
  unsigned interrupted = 0;  ///< kills in the middle of one
  std::string trouble;       ///< what was lost, or left over; empty for nothing
};

/// Kills a process at random moments that changes a layout, saves it to three files, also under the
/// name of another and into one with two hard links, and writes recovery copies.
///
/// After each kill every file must hold the last state whose saving was confirmed or the one that
/// was being saved, with all objects, or the next start must offer it; and the next start leaves no
/// file that is not one of those.
[[nodiscard]] KillResult run_kills(const KillOptions& options);

}  // namespace zemblar::simulator
