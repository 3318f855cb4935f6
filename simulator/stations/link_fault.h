#pragma once

#include <array>

namespace zemblar::simulator {

/// A fault of a command station, of its port or of the wire.
enum class LinkFault {
  refuse_item,        ///< function 2 of one locomotive is refused
  refuse_locomotive,  ///< all of one locomotive is refused
  no_answer,          ///< the commands of one locomotive have no effect and no answer
  late_answer,        ///< each answer comes late
  drop,               ///< the connection ends, or the plug is pulled
  half_open,          ///< bytes are lost in both directions without an error
  flood,              ///< unsolicited messages and garbage without a pause
  slow,               ///< bytes come and go one at a time
};

inline constexpr std::array link_faults{LinkFault::refuse_item, LinkFault::refuse_locomotive,
                                        LinkFault::no_answer,   LinkFault::late_answer,
                                        LinkFault::drop,        LinkFault::half_open,
                                        LinkFault::flood,       LinkFault::slow};

/// "refuse one item" and so on.
[[nodiscard]] const char* title(LinkFault fault);

}  // namespace zemblar::simulator
