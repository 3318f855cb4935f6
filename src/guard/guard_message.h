#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <variant>

#include "guard/stop_order.h"

namespace zemblar {

/// The messages from the program to its guard, a datagram each.
namespace guard {

/// How long the program may give no sign of life while a train drives.
inline constexpr std::chrono::seconds longest_silence{5};

/// A station is to be stopped from now on; replaces what was told of it before. The descriptor of
/// a serial line goes beside the datagram.
struct Station {
  std::string key{};   ///< tells one station from another; no line break in it
  std::string name{};  ///< for the person, UTF-8
  StopOrder order{};
};
/// That station is not to be stopped any more.
struct Gone {
  std::string key{};
};
/// The thread that brakes trains is at work.
struct Alive {
  bool driving = false;  ///< whether any locomotive is to move, or may do so still
};
/// The program ends as the person wants it to.
struct Leave {};

using Message = std::variant<Station, Gone, Alive, Leave>;

[[nodiscard]] std::string encode(const Message& message);
/// None for what is no message. The line of a station is -1.
[[nodiscard]] std::optional<Message> decode(const std::string& datagram);

}  // namespace guard
}  // namespace zemblar
