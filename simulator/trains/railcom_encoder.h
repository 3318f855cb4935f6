#pragma once

#include <cstdint>
#include <string>

namespace zemblar::simulator {

/// A locomotive's address on the track: 1 to 127 short, 1 to 10239 long (RCN-211).
struct DccAddress {
  unsigned number = 3;
  bool is_long = false;

  bool operator==(const DccAddress&) const = default;
};

/// The speed packet for 128 speed steps, from its address byte to its check byte (RCN-212).
/// `step` is 0 to 126.
[[nodiscard]] std::string speed_packet(DccAddress address, unsigned step, bool forwards);
/// The same with the emergency stop in place of a step.
[[nodiscard]] std::string stop_packet(DccAddress address, bool forwards);
/// The idle packet, which addresses no decoder.
[[nodiscard]] std::string idle_packet();

/// The bytes that a locomotive's decoder sends in the RailCom cutout (RCN-217).
///
/// Channel 1 has one datagram of two bytes: the two halves of the address in turn, after any
/// packet. Channel 2 has six bytes and is used by the addressed decoder. This class implements the
/// decoder's side of the standard and shares no code with the program's RailCom reader.
class RailComEncoder {
 public:
  explicit RailComEncoder(DccAddress address) : address_(address) {}

  /// Channel 1: identifiers 1 and 2 in turn.
  [[nodiscard]] std::string channel_1();
  /// Channel 2 after a packet for this decoder: its speed in km/h (identifier 7, subindex 0) as
  /// long as it fits in a byte, then acknowledgements.
  [[nodiscard]] std::string channel_2(unsigned speed) const;

  /// Any datagram of 12 bits: identifier 0 to 15.
  [[nodiscard]] static std::string datagram(unsigned id, std::uint8_t payload);
  /// The decoder acknowledges without data.
  static constexpr char acknowledge = 0b00001111;

 private:
  DccAddress address_;
  bool low_half_next_ = false;
};

}  // namespace zemblar::simulator
