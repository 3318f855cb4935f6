#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <variant>

#include "guard/stop_order.h"

namespace zemblar {

/// The messages from the program to its guard, one datagram each.
namespace guard {

/// How long the program may send no message while a train moves.
inline constexpr std::chrono::seconds longest_silence{5};

/// Adds a station to be stopped, or replaces the order of a known one. The datagram carries the
/// descriptor of a serial line.
struct Station {
  std::string key{};   ///< identifies the station; without line breaks
  std::string name{};  ///< shown to the user, UTF-8
  StopOrder order{};
};
/// The station is not to be stopped any more.
struct Gone {
  std::string key{};
};
/// Sent regularly by the thread that brakes trains.
struct Alive {
  bool driving = false;  ///< whether a locomotive is commanded to move, or may still be moving
};
/// The user quits the program.
struct Leave {};

using Message = std::variant<Station, Gone, Alive, Leave>;

[[nodiscard]] std::string encode(const Message& message);
/// No value for bytes that are no message. `order.line` of a decoded station is -1.
[[nodiscard]] std::optional<Message> decode(const std::string& datagram);

}  // namespace guard
}  // namespace zemblar
