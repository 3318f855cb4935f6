#include "simulator/stations/hex.h"

namespace zemblar::simulator {

std::string hex(std::string_view bytes) {
  constexpr auto* digits = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (!text.empty()) text += ' ';
    text += {digits[byte >> 4], digits[byte & 15]};
  }
  return text;
}

}  // namespace zemblar::simulator
