#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "runtime/timer.h"
#include "simulator/stations/link_fault.h"

namespace zemblar::simulator {

/// A wish of the user before, during or after a fault.
enum class Wish { emergency_stop, power_off, point };
inline constexpr std::array wishes{Wish::emergency_stop, Wish::power_off, Wish::point};

/// The times that a wish took to a station; see StationLink::delay.
struct FaultCell {
  using Milliseconds = std::chrono::milliseconds;

  std::vector<Milliseconds> times{};  ///< in order of length
  unsigned late = 0;                  ///< stops that took longer than the link allows
  unsigned missing = 0;               ///< never arrived
  unsigned untold = 0;                ///< neither arrived, nor did anything tell the operator
  unsigned repeated = 0;              ///< points that arrived more than once

  /// Stops arrive in time, all of them. A point arrives once, or the operator is told.
  [[nodiscard]] bool holds(Wish wish) const;
};

/// Drives trains while one station fails in each of the ways, with wishes at random moments before,
/// during and after the fault.
class FaultMatrix {
 public:
  /// `times`: number of wishes in each cell.
  FaultMatrix(unsigned times, std::uint64_t seed);

  [[nodiscard]] bool holds() const;
  /// Tables as they stand in docs/links.md: in each cell how often, the median and the longest time
  /// in ms, and what does not hold.
  void print(std::ostream& out) const;
  /// Whose times, "ECoS" or "ECoS beside a failing LI-USB", then the fault and the wish.
  using Key = std::tuple<std::string, LinkFault, Wish>;
  [[nodiscard]] const std::map<Key, FaultCell>& cells() const { return cells_; }

 private:
  std::map<Key, FaultCell> cells_;
};

}  // namespace zemblar::simulator
