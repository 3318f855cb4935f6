#include "devices/decoder_update.h"

namespace zemblar {

std::uint32_t DecoderUpdate::agreeing(const DecoderUpdate& other) const {
  const auto same_functions = ~(functions ^ other.functions) << 2;
  auto same = same_functions & all_bits;
  if (speed == other.speed) same |= speed_bit;
  if (direction == other.direction) same |= direction_bit;
  return same & mask;
}

}  // namespace zemblar
