// Reads bytes in ways that the data chooses, and compares each step with a model that goes bit by
// bit.

#include <optional>

#include "devices/tessara/bitstream_reader.h"
#include "fuzz/fuzz.h"

namespace zemblar {
namespace {

/// Counts bits; nothing stands for the end of the stream.
class Model {
 public:
  explicit Model(std::string_view bytes) : bytes_(bytes) {}

  [[nodiscard]] bool eos() const { return bit_ == bytes_.size() * 8; }
  void align() { bit_ = (bit_ + 7) / 8 * 8; }

  std::optional<std::uint32_t> read_bits(unsigned count) {
    if (eos()) return {};
    std::uint64_t whole = 0, part = 0;
    unsigned part_bits = 0;
    for (unsigned i = 0; i < count; ++i) {
      if (eos()) return {};
      part |= static_cast<std::uint64_t>(bytes_[bit_ / 8] >> bit_ % 8 & 1) << part_bits++;
      const bool byte_ends = ++bit_ % 8 == 0;
      if (!byte_ends && i + 1 < count) continue;
      whole = whole << part_bits | part;
      part = part_bits = 0;
    }
    return static_cast<std::uint32_t>(whole);
  }
  std::optional<std::string> read_bytes(std::size_t count) {
    align();
    if (eos() || bytes_.size() - bit_ / 8 < count) return {};
    const std::string taken(bytes_.substr(bit_ / 8, count));
    bit_ += count * 8;
    return taken;
  }
  std::optional<std::uint8_t> read_byte() {
    const auto one = read_bytes(1);
    if (!one) return {};
    return static_cast<std::uint8_t>(one->front());
  }

 private:
  std::string_view bytes_;
  std::size_t bit_ = 0;
};

template <typename Read>
auto unless_eos(Read read) -> std::optional<decltype(read())> {
  try {
    return read();
  } catch (const BitstreamReader::EOS&) {
    return {};
  }
}

}  // namespace

void try_input(std::string_view input) {
  if (input.empty()) return;
  // The first byte says how many bytes are read; the others say how, one step each.
  const auto bytes = input.substr(1, byte_at(input, 0));
  BitstreamReader reader(bytes);
  Model model(bytes);
  for (auto place = 1 + bytes.size(); place < input.size(); ++place) {
    const auto step = byte_at(input, place);
    const auto n = step / 4;
    switch (step % 4) {
      case 0:
        reader.align();
        model.align();
        break;
      case 1:
        require(unless_eos([&] { return reader.read_byte(); }) == model.read_byte(), "a byte\n");
        break;
      case 2:
        require(unless_eos([&] { return reader.read_bytes(n); }) == model.read_bytes(n), "bytes\n");
        break;
      default:
        require(unless_eos([&] { return reader.read_bits(n % 33); }) == model.read_bits(n % 33),
                "bits\n");
    }
    require(reader.eos() == model.eos(), "the end\n");
  }
}

}  // namespace zemblar
