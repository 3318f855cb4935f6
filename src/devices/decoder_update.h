#pragma once

#include <bit>
#include <cstdint>

#include "core/direction.h"

namespace zemblar {

/// The values that a decoder should receive, or those that a device has delivered to it.
///
/// `mask` selects items: in a decoder those that are out of date, in a device's answer those that
/// were delivered.
struct DecoderUpdate {
  static constexpr std::uint32_t speed_bit = 1u << 0;
  static constexpr std::uint32_t direction_bit = 1u << 1;
  static constexpr std::uint32_t function_bit(unsigned fn) { return 1u << (fn + 2); }
  static constexpr std::uint32_t all_bits = 0x7fffffff;
  static constexpr unsigned max_function = 28;
  static constexpr std::uint32_t max_speed = 126;
  /// The speed that stands for an emergency stop.
  static constexpr std::uint32_t emergency_stop = ~0u;

  std::uint32_t mask = 0;
  std::uint32_t speed = 0;  ///< 0 to 126, or `emergency_stop`
  Direction direction = Direction::Forwards;
  std::uint32_t functions = 0;  ///< bit n: function n is on

  /// The number of the function with this bit.
  static constexpr unsigned function_of(std::uint32_t bit) {
    return static_cast<unsigned>(std::countr_zero(bit)) - 2;
  }

  [[nodiscard]] bool function(unsigned fn) const { return (functions >> fn & 1u) != 0; }
  /// The items in `mask` whose values are equal in both records.
  [[nodiscard]] std::uint32_t agreeing(const DecoderUpdate& other) const;
  /// The value of one item: the speed, the direction, or 1 for a function that is on.
  [[nodiscard]] std::uint32_t value_of(std::uint32_t item) const;
  /// True if the speed is out of date, and the locomotive is to stop.
  [[nodiscard]] bool is_stop() const {
    return (mask & speed_bit) != 0 && (speed == 0 || speed == emergency_stop);
  }
};

/// The order in which waiting commands are sent: stops first.
enum class Urgency { stop, speed, direction, function, nothing };
/// The urgency of the most urgent item in the mask.
[[nodiscard]] Urgency urgency_of(const DecoderUpdate& wish);

}  // namespace zemblar
