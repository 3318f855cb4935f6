#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>

namespace YAML {
class Emitter;
class Node;
}  // namespace YAML

namespace zemblar {

/// A DCC address of one of four types, packed in 16 bits: the type in the top two, the number in
/// the others.
///
/// Short mobile addresses run from 1 to 127, long ones from 1 to 10239 (NMRA S-9.2.1, extended
/// packet formats), accessory decoders from 1 to 512, accessory outputs from 1 to 2048. A long
/// address below 128 is legal and differs from the short one of that number. Addresses compare as
/// whole words: short before long before accessory before output.
///
/// A number outside the range of its type is a programming fault and fails an assertion. Check a
/// number from a file or a wire with `is_mobile_number` first.
class Address {
 public:
  /// The types as a user chooses among them: `mobile` is SHORT or LONG.
  enum class Kind : int { mobile = 0, accessory = 1, output = 2 };

  static constexpr std::uint16_t TYPE_MASK = 0xc000;
  static constexpr std::uint16_t SHORT = 0x0000;
  static constexpr std::uint16_t LONG = 0x4000;
  static constexpr std::uint16_t ACCESSORY = 0x8000;
  static constexpr std::uint16_t OUTPUT = 0xc000;

  static constexpr unsigned max_short = 127;
  static constexpr unsigned max_long = 10239;
  static constexpr unsigned max_accessory = 512;
  static constexpr unsigned max_output = 2048;

  /// Short 3, the address with which decoders leave the factory.
  constexpr Address() = default;
  /// SHORT for numbers up to 127, else LONG.
  explicit Address(unsigned addr);
  Address(unsigned addr, bool is_long);
  Address(Kind kind, unsigned addr);

  /// True if a mobile address, SHORT or LONG, can have the number.
  [[nodiscard]] static constexpr bool is_mobile_number(unsigned long addr) {
    return addr > 0 && addr <= max_long;
  }
  /// The highest number of a kind.
  [[nodiscard]] static unsigned max_number(Kind kind);

  [[nodiscard]] Kind get_kind() const;
  /// Changes the kind and keeps the number. A number above the range of the new kind becomes the
  /// highest of that kind; a mobile address is SHORT up to 127.
  void set_kind(Kind kind);
  [[nodiscard]] unsigned get_addr() const { return address_ & ~TYPE_MASK; }
  /// Keeps the type, except that a SHORT address becomes LONG when the number is above 127.
  void set_addr(unsigned addr);
  [[nodiscard]] bool is_long() const { return type() == LONG; }
  /// Makes a mobile address LONG or SHORT. A number above 127 becomes 127 when made SHORT.
  void set_long(bool is_long);

  auto operator<=>(const Address&) const = default;

 private:
  [[nodiscard]] std::uint16_t type() const { return address_ & TYPE_MASK; }
  void set(std::uint16_t type, unsigned addr) {
    address_ = static_cast<std::uint16_t>(type | addr);
  }

  std::uint16_t address_ = SHORT | 3;
};

/// "!long " before the number for a LONG address below 128, then the number.
std::ostream& operator<<(std::ostream& out, Address address);

/// The number, under the local tag `!long` for a LONG address below 128. The kind is not written:
/// a reader of a mobile address takes the number, and throws YAML::InvalidScalar for one that no
/// mobile address can have.
YAML::Emitter& operator<<(YAML::Emitter& out, Address address);
void operator>>(const YAML::Node& node, Address& address);
/// Reads an address whose kind follows from its key.
void read_address(const YAML::Node& node, Address::Kind kind, Address& address);

}  // namespace zemblar
