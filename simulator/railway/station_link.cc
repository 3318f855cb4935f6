#include "simulator/railway/station_link.h"

#include <algorithm>
#include <utility>

namespace zemblar::simulator {

const char* title(LinkFault fault) {
  switch (fault) {
    case LinkFault::refuse_item:
      return "refuses one item";
    case LinkFault::refuse_locomotive:
      return "refuses one locomotive";
    case LinkFault::no_answer:
      return "no answer for one locomotive";
    case LinkFault::late_answer:
      return "late answers";
    case LinkFault::drop:
      return "dropped or unplugged";
    case LinkFault::half_open:
      return "half-open";
    case LinkFault::flood:
      return "flood";
    case LinkFault::slow:
      return "slow";
  }
  return "";
}

void StationLink::begin(LinkFault fault, unsigned victim, Chance& chance) {
  fault_ = fault;
  apply(fault, victim, chance);
}

void StationLink::end(bool by_hand) {
  if (!fault_) return;
  if (blocked_until_ == Clock::time_point::max()) blocked_until_ = Clock::now();
  lift(*std::exchange(fault_, {}), by_hand);
}

void StationLink::block_from_now() {
  if (blocked_until_ == Clock::time_point::max()) return;
  blocked_from_ = Clock::now();
  blocked_until_ = Clock::time_point::max();
}

Clock::duration StationLink::delay(Clock::time_point wished, Clock::time_point arrived) const {
  if (arrived <= blocked_from_) return arrived - wished;
  return std::max(arrived - std::max(wished, blocked_until_), Clock::duration::zero());
}

}  // namespace zemblar::simulator
