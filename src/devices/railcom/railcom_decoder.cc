#include "devices/railcom/railcom_decoder.h"

#include <array>
#include <cassert>
#include <utility>

namespace zemblar {
namespace {

// --- The 4-of-8 code of RCN-217: each byte on the track has four bits set ---

constexpr std::uint8_t control = 0x80;  // marks the symbols that are not data
constexpr std::uint8_t invalid = 0xff;

/// The bytes that encode 0 to 63.
constexpr std::array<std::uint8_t, 64> data_codes = {
    0xac, 0xaa, 0xa9, 0xa5, 0xa3, 0xa6, 0x9c, 0x9a,  //
    0x99, 0x95, 0x93, 0x96, 0x8e, 0x8d, 0x8b, 0xb1,  //
    0xb2, 0xb4, 0xb8, 0x74, 0x72, 0x6c, 0x6a, 0x69,  //
    0x65, 0x63, 0x66, 0x5c, 0x5a, 0x59, 0x55, 0x53,  //
    0x56, 0x4e, 0x4d, 0x4b, 0x47, 0x71, 0xe8, 0xe4,  //
    0xe2, 0xd1, 0xc9, 0xc5, 0xd8, 0xd4, 0xd2, 0xca,  //
    0xc6, 0xcc, 0x78, 0x17, 0x1b, 0x1d, 0x1e, 0x2e,  //
    0x36, 0x3a, 0x27, 0x2b, 0x2d, 0x35, 0x39, 0x33,
};

/// The bytes of the control symbols 1 to 6: acknowledgement and the like, and reserved ones.
constexpr std::array<std::uint8_t, 6> control_codes = {0x0f, 0x87, 0xc3, 0xf0, 0x3c, 0xe1};

constexpr auto symbols = [] {
  std::array<std::uint8_t, 256> table{};
  table.fill(invalid);
  std::uint8_t value = 0;
  for (const auto code : data_codes) table[code] = value++;
  value = control + 1;
  for (const auto code : control_codes) table[code] = value++;
  return table;
}();

std::uint8_t symbol(char byte) {
  return symbols[static_cast<std::uint8_t>(byte)];
}

// --- Datagrams ---

constexpr unsigned id_address_high = 1;
constexpr unsigned id_address_low = 2;
constexpr unsigned id_first_reserved = 9;
constexpr unsigned id_last_reserved = 14;
constexpr unsigned id_long = 15;  // of four symbols
constexpr std::uint8_t top_bit = 0x80;

/// The number of a locomotive's address, 0 if there is none. It is converted to an Address only if
/// the signal has handlers.
struct MobileNumber {
  unsigned number = 0;
  bool is_long = false;

  [[nodiscard]] bool valid() const { return Address::is_mobile_number(number); }
};

// Broadcast, accessory and idle packets address no locomotive (NMRA S-9.2.1).
MobileNumber addressed_by(std::string_view dcc) {
  const unsigned first = static_cast<std::uint8_t>(dcc[0]);
  if (first <= 127) return {first, false};
  if (first < 192 || first > 231 || dcc.size() < 2) return {};
  return {(first << 8 | static_cast<std::uint8_t>(dcc[1])) & 0x3fff, true};
}

}  // namespace

/// The signal for a datagram, and the bits that are passed.
struct RailComDecoder::Route {
  Feedback State::*signal = nullptr;
  std::uint8_t bits = 0x7f;
};

/// One call of `decode`. Its steps return whether the decoder still exists.
class RailComDecoder::Run {
 public:
  Run(const std::shared_ptr<State>& state, std::string_view dcc)
      : state_(state), addressed_(addressed_by(dcc)) {}

  bool take_control() { return see(addressed_); }

  bool take_datagram(unsigned first, unsigned second) {
    const auto payload = static_cast<std::uint8_t>(first << 6 | second);
    switch (first >> 2) {
      case id_address_high:
        state_->address_high = payload;
        return true;
      case id_address_low:
        return see(complete_address(payload));
      default:
        return !addressed_.valid() || (see(addressed_) && pass_on(routes[first >> 1], payload));
    }
  }

 private:
  /// Indexed by the identifier and the top bit of the payload.
  static constexpr auto routes = [] {
    std::array<Route, 32> table{};
    table[3 << 1] = {&State::id3_low};
    table[3 << 1 | 1] = {&State::id3_high};
    table[4 << 1] = table[4 << 1 | 1] = {&State::id4, 0xff};
    table[5 << 1] = table[5 << 1 | 1] = {&State::id5, 0xff};
    table[6 << 1] = table[6 << 1 | 1] = {&State::id6, 0xff};
    table[7 << 1] = {&State::id7_low};
    table[7 << 1 | 1] = {&State::id7_high};
    table[8 << 1] = {&State::id8};
    return table;
  }();

  bool see(MobileNumber number) {
    return !number.valid() || state_->seen.empty() || tell(state_->seen, number);
  }

  bool pass_on(const Route& route, std::uint8_t payload) {
    if (!route.signal) return true;
    const auto& signal = *state_.*route.signal;
    return signal.empty() ||
           tell(signal, addressed_, static_cast<std::uint8_t>(payload & route.bits));
  }

  MobileNumber complete_address(std::uint8_t low) {
    const unsigned high = std::exchange(state_->address_high, no_address_high);
    if (high == no_address_high) return {};
    if (!(high & top_bit)) return {low & 0x7fu, false};
    return {(high & 0x3f) << 8 | low, true};
  }

  template <typename Signal, typename... Values>
  bool tell(const Signal& signal, MobileNumber number, Values... values) {
    if (!kept_) kept_ = state_;
    signal.emit(Address(number.number, number.is_long), values...);
    return kept_->alive;
  }

  const std::shared_ptr<State>& state_;  // the decoder's own
  std::shared_ptr<State> kept_{};        // keeps the state while handlers may destroy the decoder
  MobileNumber addressed_;
};

void RailComDecoder::decode(std::string_view dcc, std::string_view packet) {
  assert(!dcc.empty());
  assert(!packet.empty());
  Run run(state_, dcc);
  // A single last symbol has no meaning.
  for (std::size_t pos = 0; pos + 1 < packet.size(); pos += 2) {
    const auto first = symbol(packet[pos]);
    const auto second = symbol(packet[pos + 1]);
    if (first & control) {
      if (first == invalid || second == invalid || !run.take_control()) return;
      continue;
    }
    const unsigned id = first >> 2;
    if (second & control || (id >= id_first_reserved && id <= id_last_reserved)) return;
    if (!run.take_datagram(first, second)) return;
    if (id == id_long) pos += 2;
  }
}

}  // namespace zemblar
