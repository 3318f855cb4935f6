#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace zemblar {

/// Reads bit fields and byte strings from bytes, which must outlive the reader.
///
/// Within a byte, fields are read from the least significant bit upwards; a field that crosses
/// bytes has its most significant part first. This mixture is the frame format of the Tessara
/// readers. Pure.
class BitstreamReader {
 public:
  /// The bytes end within the requested field. The part that was read is lost.
  class EOS : public std::exception {
   public:
    const char* what() const noexcept override { return "End of Stream"; }
  };

  explicit BitstreamReader(std::string_view bytes)
      : pos_(bytes.data()), end_(bytes.data() + bytes.size()) {}

  /// True if every bit has been read; a partly read last byte counts as unread.
  [[nodiscard]] bool eos() const { return pos_ == end_; }
  /// Skips the rest of a partly read byte.
  void align();
  /// The next whole byte. Throws EOS.
  std::uint8_t read_byte();
  /// The next `count` whole bytes. Throws EOS when fewer are left, and when none are, even for a
  /// `count` of 0.
  std::string read_bytes(std::size_t count);
  /// The next `bits` bits, at most 32 (asserted as "bits <= 32"). Throws EOS, at the end also for
  /// 0.
  std::uint32_t read_bits(unsigned bits);

 private:
  [[nodiscard]] std::uint8_t current() const { return static_cast<std::uint8_t>(*pos_); }
  void require_byte() const;
  std::uint32_t take_from_current(unsigned bits);

  const char* pos_;
  const char* end_;
  std::uint8_t bit_ = 0;  // number of bits read of the byte at `pos_`, 0 to 7; 0 at the end
};

}  // namespace zemblar
