#include "devices/liusb/liusb_codec.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <functional>
#include <iterator>
#include <numeric>

namespace zemblar::liusb {
namespace {

constexpr std::uint8_t start = 0xff;
constexpr std::uint8_t answer_mark = 0xfe;
constexpr std::uint8_t broadcast_mark = 0xfd;

template <typename Iterator>
std::uint8_t exclusive_or(Iterator begin, Iterator end) {
  return std::accumulate(begin, end, std::uint8_t{0}, std::bit_xor<std::uint8_t>());
}

std::uint8_t byte(unsigned value) {
  return static_cast<std::uint8_t>(value & 0xff);
}

/// The address as the station expects it; 0xC000 marks a long one.
unsigned number_of(Address address) {
  if (!address.is_long()) {
    assert((address.get_addr() > 0) && (address.get_addr() < 100));
    return address.get_addr();
  }
  assert((address.get_addr() > 99) && (address.get_addr() < 10000));
  return address.get_addr() | 0xc000;
}

Bytes to_locomotive(unsigned id, Address address, unsigned data) {
  const auto number = number_of(address);
  return {0xe4, byte(id), byte(number >> 8), byte(number), byte(data)};
}

/// In DCC baseline packets the lowest bit of a speed step is above the others (NMRA S-9.2).
unsigned fold(unsigned step) {
  return (step & 1) << 4 | step >> 1;
}

unsigned step_code(DecoderType type, unsigned speed) {
  switch (type) {
    case DecoderType::dcc14:
      return speed * 14 / 2 / 63 + 1;
    case DecoderType::dcc27:
      return fold(speed * 27 / 2 / 63 + 3);
    case DecoderType::dcc28:
      return fold(speed * 28 / 2 / 63 + 3);
    case DecoderType::dcc128:
      break;
  }
  return speed + 1;
}

constexpr std::array<FunctionGroup, 5> groups = {
    {{0x20, 0, 4}, {0x21, 5, 8}, {0x22, 9, 12}, {0x23, 13, 20}, {0x28, 21, 28}}};

Bytes switch_output(unsigned address, unsigned output, bool on, unsigned action) {
  assert((address >= 1) && (address <= 256));
  assert((output >= 1) && (output <= 4));
  const auto bits = (output * 2 - 2) | (on ? 1u : 0u);
  return {0x52, byte(address - 1), byte(bits | action)};
}

}  // namespace

// --- Frames ---

Bytes frame(const Bytes& message) {
  assert(!message.empty() && message.size() == (message[0] & 15u) + 1);
  Bytes bytes;
  bytes.reserve(message.size() + 3);
  bytes.push_back(start);
  bytes.push_back(answer_mark);
  std::ranges::copy(message, std::back_inserter(bytes));
  bytes.push_back(exclusive_or(message.begin(), message.end()));
  return bytes;
}

void AnswerReader::add(std::span<const std::uint8_t> bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

void AnswerReader::drop(std::size_t count) {
  bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(count));
}

bool AnswerReader::checks(std::size_t length) const {
  return exclusive_or(bytes_.begin() + 2, bytes_.begin() + static_cast<std::ptrdiff_t>(length)) ==
         0;
}

std::optional<Bytes> AnswerReader::next() {
  while (true) {
    bytes_.erase(bytes_.begin(), std::ranges::find(bytes_, start));
    if (bytes_.size() < 3) return {};
    const bool answers = bytes_[1] == answer_mark;
    if (!answers && bytes_[1] != broadcast_mark) {
      drop(1);
      continue;
    }
    const std::size_t length = (bytes_[2] & 15u) + 4;
    if (bytes_.size() < length) return {};
    if (!checks(length)) {
      drop(1);
      continue;
    }
    const Bytes message(bytes_.begin() + 2,
                        bytes_.begin() + static_cast<std::ptrdiff_t>(length) - 1);
    drop(length);
    if (answers) return message;
    if (const auto power = read_power(message)) power_ = power;
  }
}

// --- Locomotives ---

bool can_drive(Address address) {
  const auto number = address.get_addr();
  if (address.get_kind() != Address::Kind::mobile) return false;
  return address.is_long() ? number > 99 && number < 10000 : number > 0 && number < 100;
}

std::uint8_t speed_byte(DecoderType type, std::uint32_t speed, Direction direction) {
  const auto forwards = direction == Direction::Forwards ? 0x80u : 0u;
  if (speed == DecoderUpdate::emergency_stop) return byte(forwards | 1);
  return byte(forwards | (speed == 0 ? 0 : step_code(type, speed)));
}

Bytes drive(Address address, DecoderType type, std::uint32_t speed, Direction direction) {
  const auto id = 0x10 + static_cast<unsigned>(type);
  return to_locomotive(id, address, speed_byte(type, speed, direction));
}

std::uint32_t FunctionGroup::mask() const {
  return (DecoderUpdate::function_bit(last) << 1) - DecoderUpdate::function_bit(first);
}

const FunctionGroup& group_of(unsigned fn) {
  assert(fn <= DecoderUpdate::max_function);
  return *std::ranges::find_if(groups, [fn](const auto& group) { return fn <= group.last; });
}

Bytes set_functions(Address address, const FunctionGroup& group, std::uint32_t functions) {
  const auto count = group.last - group.first + 1;
  auto bits = functions >> group.first & ((1u << count) - 1);
  // The headlight's bit is above those of the four functions that follow it.
  if (group.first == 0) bits = (bits & 1) << 4 | bits >> 1;
  return to_locomotive(group.id, address, bits);
}

// --- Accessories ---

bool can_switch(unsigned address) {
  return address >= 1 && address <= 256;
}

Bytes energise(unsigned address, unsigned output, bool on) {
  return switch_output(address, output, on, 0x80);
}

Bytes release(unsigned address, unsigned output, bool on) {
  return switch_output(address, output, on, 0x88);
}

// --- Answers ---

bool is_done(const Bytes& answer) {
  return answer == Bytes{0x01, 0x04};
}

std::optional<StationStatus> read_status(const Bytes& answer) {
  if (answer.size() != 3 || answer[0] != 0x62 || answer[1] != 0x22) return {};
  return StationStatus{.power = (answer[2] & 3) == 0,
                       .wants_start_mode = (answer[2] & 0x44) == 0x44};
}

std::optional<bool> read_power(const Bytes& broadcast) {
  if (broadcast == Bytes{0x61, 0x00}) return false;
  if (broadcast == Bytes{0x61, 0x01}) return true;
  return {};
}

}  // namespace zemblar::liusb
