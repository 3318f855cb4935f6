#include "devices/decoder_update.h"

namespace zemblar {

std::uint32_t DecoderUpdate::agreeing(const DecoderUpdate& other) const {
  const auto same_functions = ~(functions ^ other.functions) << 2;
  auto same = same_functions & all_bits;
  if (speed == other.speed) same |= speed_bit;
  if (direction == other.direction) same |= direction_bit;
  return same & mask;
}

std::uint32_t DecoderUpdate::value_of(std::uint32_t item) const {
  if (item == speed_bit) return speed;
  if (item == direction_bit) return static_cast<std::uint32_t>(direction);
  return function(function_of(item)) ? 1 : 0;
}

Urgency urgency_of(const DecoderUpdate& wish) {
  if (wish.is_stop()) return Urgency::stop;
  if (wish.mask & DecoderUpdate::speed_bit) return Urgency::speed;
  if (wish.mask & DecoderUpdate::direction_bit) return Urgency::direction;
  return wish.mask == 0 ? Urgency::nothing : Urgency::function;
}

}  // namespace zemblar
