#include "devices/tessara/bitstream_reader.h"

#include <algorithm>
#include <cassert>

namespace zemblar {
namespace {

constexpr unsigned byte_bits = 8;

}  // namespace

void BitstreamReader::require_byte() const {
  if (eos()) throw EOS();
}

void BitstreamReader::align() {
  if (bit_ == 0) return;
  assert(!eos());
  ++pos_;
  bit_ = 0;
}

std::uint8_t BitstreamReader::read_byte() {
  align();
  require_byte();
  const auto byte = current();
  ++pos_;
  return byte;
}

std::string BitstreamReader::read_bytes(std::size_t count) {
  align();
  require_byte();
  if (static_cast<std::size_t>(end_ - pos_) < count) throw EOS();
  const std::string bytes(pos_, count);
  pos_ += count;
  return bytes;
}

// `bits` must not exceed the number of unread bits in the byte.
std::uint32_t BitstreamReader::take_from_current(unsigned bits) {
  require_byte();
  const auto value = static_cast<unsigned>(current()) >> bit_ & ((1u << bits) - 1);
  bit_ = static_cast<std::uint8_t>(bit_ + bits);
  assert(bit_ <= 8);
  if (bit_ == byte_bits) align();
  return value;
}

std::uint32_t BitstreamReader::read_bits(unsigned bits) {
  assert(bits <= 32);
  const auto take = [this](unsigned wanted) { return std::min(wanted, byte_bits - bit_); };
  auto count = take(bits);
  auto value = take_from_current(count);
  for (bits -= count; bits > 0; bits -= count) {
    count = take(bits);
    value = value << count | take_from_current(count);
  }
  return value;
}

}  // namespace zemblar
