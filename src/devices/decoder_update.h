#pragma once

#include <cstdint>

#include "core/direction.h"

namespace zemblar {

/// What a decoder should receive, or what a device has delivered to one.
///
/// `mask` says which items are meant: in a decoder those that are out of date, in a record that a
/// device hands back those that were delivered.
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

  [[nodiscard]] bool function(unsigned fn) const { return (functions >> fn & 1u) != 0; }
  /// The items named in `mask` whose values are the same in both records.
  [[nodiscard]] std::uint32_t agreeing(const DecoderUpdate& other) const;
};

}  // namespace zemblar
