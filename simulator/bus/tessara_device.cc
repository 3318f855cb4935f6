#include "simulator/bus/tessara_device.h"

namespace zemblar::simulator {
namespace {

constexpr unsigned bits_per_word = 15;

}  // namespace

std::string tessara_info(std::string_view kind, const std::vector<std::uint16_t>& speeds) {
  std::string info(kind.substr(0, 4));
  info.resize(4);
  for (const auto word : speeds) {
    info += static_cast<char>(word >> 8);
    info += static_cast<char>(word & 0xff);
  }
  return info;
}

bool has_speed(const std::vector<std::uint16_t>& speeds, unsigned index) {
  bool has = false;
  for (unsigned k = 0; k < speeds.size() && k <= index; ++k) {
    if (index - k < bits_per_word) has = (speeds[k] >> (index - k) & 1) != 0;
  }
  return has;
}

}  // namespace zemblar::simulator
