#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace zemblar {

/// Takes bit fields and byte strings out of bytes that someone else keeps alive.
///
/// Within a byte, fields run from the least significant bit upwards; a field that crosses bytes is
/// put together most significant part first. That mixture is the frame format of the readers that
/// this is for. Pure.
class BitstreamReader {
 public:
  /// The bytes end before what was asked for does. What had been read by then is lost.
  class EOS : public std::exception {
   public:
    const char* what() const noexcept override { return "End of Stream"; }
  };

  explicit BitstreamReader(std::string_view bytes)
      : pos_(bytes.data()), end_(bytes.data() + bytes.size()) {}

  /// Every bit has been read; a last byte that has been read in part still counts.
  [[nodiscard]] bool eos() const { return pos_ == end_; }
  /// Leaves out what is unread of a byte that has been read in part.
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
  std::uint8_t bit_ = 0;  // used of the byte at `pos_`, 0 to 7; 0 at the end
};

}  // namespace zemblar
