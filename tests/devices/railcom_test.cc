#include <gmock/gmock.h>

#include <array>
#include <bit>
#include <functional>
#include <map>
#include <memory>
#include <sstream>

#include "devices/railcom/railcom_decoder.h"
#include "devices/tessara/bitstream_reader.h"

namespace zemblar {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using Log = std::vector<std::string>;

// --- The other end of the track: an encoder of its own, from the table as the standard prints it

constexpr std::array<const char*, 64> printed_codes = {
    "10101100", "10101010", "10101001", "10100101", "10100011", "10100110", "10011100", "10011010",
    "10011001", "10010101", "10010011", "10010110", "10001110", "10001101", "10001011", "10110001",
    "10110010", "10110100", "10111000", "01110100", "01110010", "01101100", "01101010", "01101001",
    "01100101", "01100011", "01100110", "01011100", "01011010", "01011001", "01010101", "01010011",
    "01010110", "01001110", "01001101", "01001011", "01000111", "01110001", "11101000", "11100100",
    "11100010", "11010001", "11001001", "11000101", "11011000", "11010100", "11010010", "11001010",
    "11000110", "11001100", "01111000", "00010111", "00011011", "00011101", "00011110", "00101110",
    "00110110", "00111010", "00100111", "00101011", "00101101", "00110101", "00111001", "00110011"};

std::string code(unsigned value) {
  return {static_cast<char>(std::stoul(printed_codes.at(value), nullptr, 2))};
}

std::string datagram(unsigned id, unsigned payload) {
  return code(id << 2 | payload >> 6) + code(payload & 0x3f);
}

const std::string ack = "\x0f";
const std::string to_3("\x03\x3f\x80", 3);
const std::string to_long_3("\xc0\x03\x3f", 3);
const std::string to_nobody("\xff\x00", 2);

/// A decoder of which everything that comes out is written down.
class Detector {
 public:
  Detector() {
    decoder_->signal_seen().connect([this](const Address& address) { note("seen", address); });
    write_down("3 low", decoder_->signal_id3_low());
    write_down("3 high", decoder_->signal_id3_high());
    write_down("4", decoder_->signal_id4());
    write_down("5", decoder_->signal_id5());
    write_down("6", decoder_->signal_id6());
    write_down("7 low", decoder_->signal_id7_low());
    write_down("7 high", decoder_->signal_id7_high());
    write_down("8", decoder_->signal_id8());
  }
  Log hear(const std::string& dcc, const std::string& bytes) {
    log_.clear();
    decoder_->decode(dcc, bytes);
    return log_;
  }
  /// The decoder ends when so much has been written down.
  void end_after(std::size_t count) { end_after_ = count; }

 private:
  void write_down(const std::string& name, RailComDecoder::Feedback& signal) {
    signal.connect([this, name](const Address& address, std::uint8_t value) {
      note(name, address, '=' + std::to_string(value));
    });
  }
  void note(const std::string& name, const Address& address, const std::string& value = {}) {
    std::ostringstream text;
    text << name << ' ' << address << value;
    log_.push_back(text.str());
    if (log_.size() == end_after_) decoder_.reset();
  }

  std::unique_ptr<RailComDecoder> decoder_ = std::make_unique<RailComDecoder>();
  std::size_t end_after_ = 0;
  Log log_;
};

TEST(RailComDecoder, gives_every_byte_the_symbol_of_the_standard) {
  std::map<std::string, unsigned> values;
  for (unsigned i = 0; i < printed_codes.size(); ++i) values[code(i)] = i;
  const std::string controls = "\x0f\x87\xc3\xf0\x3c\xe1";
  for (unsigned i = 0; i < 256; ++i) {
    const std::string byte(1, static_cast<char>(i));
    const auto value = values.find(byte);
    const bool is_control = controls.find(byte) != std::string::npos;
    EXPECT_EQ(value != values.end() || is_control, std::popcount(i) == 4) << i;
    Log second;
    if (value != values.end()) second = {"seen 3", "5 3=" + std::to_string(64 + value->second)};
    EXPECT_EQ(Detector().hear(to_3, code(5 << 2 | 1) + byte), second) << i;
    if (value != values.end()) continue;
    const Log first(is_control ? 1 : 0, "seen 3");
    EXPECT_EQ(Detector().hear(to_3, byte + code(7)), first) << i;
    EXPECT_EQ(Detector().hear(to_3, ack + byte), first) << i;
  }
}

TEST(RailComDecoder, takes_what_follows_a_packet_for_the_answer_of_whom_it_addressed) {
  const struct {
    std::string dcc;
    Log seen;
  } cases[] = {
      {{"\x00", 1}, {}},
      {"\x01", {"seen 1"}},
      {"\x7f\x01", {"seen 127"}},
      {"\x80\x81", {}},
      {"\xbf\x01", {}},
      {{"\xc0\x00", 2}, {}},
      {"\xc0", {}},
      {to_long_3, {"seen !long 3"}},
      {"\xc1\x02", {"seen 258"}},
      {"\xe7\xff", {"seen 10239"}},
      {{"\xe8\x00", 2}, {}},
      {to_nobody, {}},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(Detector().hear(each.dcc, datagram(0, 0)), each.seen) << testing::PrintToString(each);
    EXPECT_EQ(Detector().hear(each.dcc, ack + ack), each.seen) << testing::PrintToString(each);
  }
}

TEST(RailComDecoder, tells_what_each_datagram_says) {
  const auto then = [](const std::string& bytes) { return bytes + datagram(4, 9); };
  const struct {
    const char* what;
    std::string bytes;
    Log log;
  } cases[] = {
      {"0", then(datagram(0, 255)), {"seen 3", "seen 3", "4 3=9"}},
      {"3 low", datagram(3, 127), {"seen 3", "3 low 3=127"}},
      {"3 high", datagram(3, 128), {"seen 3", "3 high 3=0"}},
      {"whole payloads",
       datagram(4, 200) + datagram(5, 129) + datagram(6, 255),
       {"seen 3", "4 3=200", "seen 3", "5 3=129", "seen 3", "6 3=255"}},
      {"7 low", datagram(7, 65), {"seen 3", "7 low 3=65"}},
      {"7 high", datagram(7, 193), {"seen 3", "7 high 3=65"}},
      {"8", datagram(8, 66), {"seen 3", "8 3=66"}},
      {"8 with its top bit", then(datagram(8, 194)), {"seen 3", "seen 3", "4 3=9"}},
      {"15 has four symbols", then(datagram(15, 1) + "\x01\x02"), {"seen 3", "seen 3", "4 3=9"}},
      {"15 cut off", datagram(15, 1) + code(1), {"seen 3"}},
      {"9 is reserved", then(datagram(9, 0)), {}},
      {"14 is reserved", then(datagram(14, 255)), {}},
      {"one symbol", code(3), {}},
      {"one control symbol", ack, {}},
      {"a control symbol and any other", then(ack + code(9)), {"seen 3", "seen 3", "4 3=9"}},
      {"a data symbol and a control symbol", then(code(16) + ack), {}},
      {"no symbol at first", then({"\x00", 1}), {}},
      {"nothing on channel 1 but noise", then("\xff\xff"), {}},
      {"noise behind a datagram", then(datagram(4, 8) + "\x01"), {"seen 3", "4 3=8"}},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(Detector().hear(to_3, each.bytes), each.log) << each.what;
    EXPECT_EQ(Detector().hear(to_nobody, each.bytes), Log()) << each.what;
  }
}

TEST(RailComDecoder, passes_by_an_answer_that_nobody_was_asked_for) {
  const auto bytes = datagram(5, 1) + ack + ack + datagram(15, 0) + ack + ack;
  EXPECT_THAT(Detector().hear(to_nobody, bytes + datagram(1, 0) + datagram(2, 40)),
              ElementsAre("seen 40"));
}

TEST(RailComDecoder, joins_the_two_halves_of_an_address_over_packets) {
  const struct {
    unsigned high, low;
    Log seen;
  } cases[] = {
      {0, 3, {"seen 3"}},
      {0, 131, {"seen 3"}},
      {127, 127, {"seen 127"}},
      {0, 0, {}},
      {0, 128, {}},
      {128, 0, {}},
      {128, 3, {"seen !long 3"}},
      {129, 2, {"seen 258"}},
      {193, 2, {"seen 258"}},
      {167, 255, {"seen 10239"}},
      {168, 0, {}},
      {255, 255, {}},
  };
  for (const auto& each : cases) {
    Detector detector;
    EXPECT_EQ(detector.hear(to_nobody, datagram(1, each.high)), Log());
    EXPECT_EQ(detector.hear(to_nobody, datagram(2, each.low)), each.seen) << each.high;
    // The first half has been used up, even if it was of no use.
    EXPECT_EQ(detector.hear(to_nobody, datagram(2, 5)), Log()) << each.high;
  }
  Detector detector;
  EXPECT_THAT(detector.hear(to_3, datagram(2, 5) + datagram(4, 1)), ElementsAre("seen 3", "4 3=1"));
  detector.hear(to_3, datagram(1, 128) + datagram(1, 130));
  detector.hear(to_3, datagram(6, 0));
  EXPECT_THAT(detector.hear(to_long_3, datagram(2, 1)), ElementsAre("seen 513"));
}

TEST(RailComDecoder, may_be_destroyed_by_whoever_listens) {
  const auto bytes = datagram(1, 0) + datagram(2, 9) + ack + ack + datagram(3, 1) + datagram(7, 1);
  const auto whole = Detector().hear(to_3, bytes);
  ASSERT_EQ(whole.size(), 6U);
  for (std::size_t count = 1; count <= whole.size(); ++count) {
    Detector detector;
    detector.end_after(count);
    EXPECT_THAT(detector.hear(to_3, bytes), ElementsAreArray(whole.data(), count));
  }
}

// --- Bits ---

TEST(BitstreamReader, reads_low_bits_first_and_high_parts_first) {
  BitstreamReader reader("\xb4\x5a\xc3\x0f\x99\x81\x7e\xff\x01");
  EXPECT_EQ(reader.read_bits(2), 0U);
  EXPECT_EQ(reader.read_bits(3), 5U);
  EXPECT_EQ(reader.read_bits(3), 5U);
  EXPECT_EQ(reader.read_bits(4), 0xaU);
  EXPECT_EQ(reader.read_bits(7), 0x5U << 3 | 3U);
  EXPECT_EQ(reader.read_bits(0), 0U);
  EXPECT_EQ(reader.read_bits(32),
            ((0xc3U >> 3) << 27 | 0x0fU << 19 | 0x99U << 11 | 0x81U << 3 | 6U));
  EXPECT_EQ(reader.read_byte(), 0xff);
  EXPECT_FALSE(reader.eos());
  EXPECT_EQ(reader.read_bits(8), 1U);
  EXPECT_TRUE(reader.eos());
}

TEST(BitstreamReader, goes_on_at_whole_bytes_after_fields) {
  BitstreamReader reader(std::string_view("\x01\x02\x00\x04\x05", 5));
  reader.align();
  EXPECT_EQ(reader.read_bits(1), 1U);
  EXPECT_EQ(reader.read_bytes(2), std::string("\x02\x00", 2));
  EXPECT_EQ(reader.read_bits(3), 4U);
  reader.align();
  reader.align();
  EXPECT_EQ(reader.read_bytes(0), "");
  EXPECT_THROW(reader.read_bytes(2), BitstreamReader::EOS);
  EXPECT_EQ(reader.read_byte(), 5);
}

TEST(BitstreamReader, throws_at_the_end_whatever_is_asked_for) {
  using Read = std::function<void(BitstreamReader&)>;
  const Read reads[] = {
      [](BitstreamReader& reader) { reader.read_bits(0); },
      [](BitstreamReader& reader) { reader.read_byte(); },
      [](BitstreamReader& reader) { reader.read_bytes(0); },
      [](BitstreamReader& reader) { reader.read_bits(32); },
  };
  for (const auto& read : reads) {
    BitstreamReader nothing("");
    EXPECT_TRUE(nothing.eos());
    EXPECT_THROW(read(nothing), BitstreamReader::EOS);
  }
  BitstreamReader reader("\x0a");
  reader.read_bits(1);
  EXPECT_FALSE(reader.eos());
  EXPECT_THROW(reader.read_bits(8), BitstreamReader::EOS);
  BitstreamReader part("\x0a");
  part.read_bits(1);
  EXPECT_THROW(part.read_bytes(0), BitstreamReader::EOS);
  EXPECT_TRUE(part.eos());
}

}  // namespace
}  // namespace zemblar
