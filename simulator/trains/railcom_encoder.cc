#include "simulator/trains/railcom_encoder.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace zemblar::simulator {
namespace {

// As RCN-217 prints the code: the byte on the track for the values 0 to 63.
constexpr std::array<std::uint8_t, 64> four_of_eight = {
    0b10101100, 0b10101010, 0b10101001, 0b10100101, 0b10100011, 0b10100110, 0b10011100, 0b10011010,
    0b10011001, 0b10010101, 0b10010011, 0b10010110, 0b10001110, 0b10001101, 0b10001011, 0b10110001,
    0b10110010, 0b10110100, 0b10111000, 0b01110100, 0b01110010, 0b01101100, 0b01101010, 0b01101001,
    0b01100101, 0b01100011, 0b01100110, 0b01011100, 0b01011010, 0b01011001, 0b01010101, 0b01010011,
    0b01010110, 0b01001110, 0b01001101, 0b01001011, 0b01000111, 0b01110001, 0b11101000, 0b11100100,
    0b11100010, 0b11010001, 0b11001001, 0b11000101, 0b11011000, 0b11010100, 0b11010010, 0b11001010,
    0b11000110, 0b11001100, 0b01111000, 0b00010111, 0b00011011, 0b00011101, 0b00011110, 0b00101110,
    0b00110110, 0b00111010, 0b00100111, 0b00101011, 0b00101101, 0b00110101, 0b00111001, 0b00110011,
};

constexpr unsigned id_address_high = 1;
constexpr unsigned id_address_low = 2;
constexpr unsigned id_dynamic = 7;
constexpr unsigned channel_2_bytes = 6;

char symbol(unsigned value) {
  return static_cast<char>(four_of_eight[value]);
}

void append(std::string& bytes, unsigned byte) {
  bytes += static_cast<char>(byte);
}

std::string packet(DccAddress address, unsigned speed_byte) {
  constexpr unsigned speed_128 = 0b00111111;
  std::string bytes;
  if (address.is_long) append(bytes, 0b11000000 | address.number >> 8);
  append(bytes, address.number & 0xff);
  append(bytes, speed_128);
  append(bytes, speed_byte);
  unsigned check = 0;
  for (const auto byte : bytes) check ^= static_cast<std::uint8_t>(byte);
  append(bytes, check);
  return bytes;
}

unsigned direction_bit(bool forwards) {
  return forwards ? 0x80 : 0;
}

}  // namespace

// Step 1 of the packet is the emergency stop.
std::string speed_packet(DccAddress address, unsigned step, bool forwards) {
  assert(step <= 126);
  return packet(address, direction_bit(forwards) | (step == 0 ? 0 : step + 1));
}

std::string stop_packet(DccAddress address, bool forwards) {
  return packet(address, direction_bit(forwards) | 1);
}

std::string idle_packet() {
  return {'\xff', '\0', '\xff'};
}

std::string RailComEncoder::datagram(unsigned id, std::uint8_t payload) {
  assert(id <= 15);
  return {symbol(id << 2 | payload >> 6), symbol(payload & 0x3fu)};
}

std::string RailComEncoder::channel_1() {
  const unsigned high = address_.is_long ? 0b10000000 | address_.number >> 8 : 0;
  const bool low_half = low_half_next_;
  low_half_next_ = !low_half_next_;
  return low_half ? datagram(id_address_low, static_cast<std::uint8_t>(address_.number & 0xff))
                  : datagram(id_address_high, static_cast<std::uint8_t>(high));
}

std::string RailComEncoder::channel_2(unsigned speed) const {
  constexpr unsigned real_speed = 0;
  auto bytes = datagram(id_dynamic, static_cast<std::uint8_t>(std::min(speed, 255u)));
  bytes += symbol(real_speed);
  bytes.resize(channel_2_bytes, acknowledge);
  return bytes;
}

}  // namespace zemblar::simulator
