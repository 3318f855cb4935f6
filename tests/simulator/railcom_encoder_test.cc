#include "simulator/trains/railcom_encoder.h"

#include <gtest/gtest.h>

#include <bit>
#include <set>

#include "devices/railcom/railcom_decoder.h"

namespace zemblar::simulator {
namespace {

using Bytes = std::vector<unsigned>;

Bytes bytes_of(const std::string& text) {
  Bytes bytes;
  for (const auto byte : text) bytes.push_back(static_cast<unsigned char>(byte));
  return bytes;
}

/// The program's own reading of what the encoder has written.
class Reading {
 public:
  Reading() {
    decoder_.signal_seen().connect([this](const Address& address) { seen.push_back(address); });
  }
  void hear(const std::string& dcc, const std::string& bytes) { decoder_.decode(dcc, bytes); }

  std::vector<Address> seen;

 private:
  RailComDecoder decoder_;
};

TEST(RailComEncoder, names_every_address_by_two_broadcasts_and_by_one_answer) {
  const auto check = [](DccAddress address) {
    RailComEncoder encoder(address);
    const std::vector<Address> one{Address(address.number, address.is_long)};
    Reading broadcast;
    broadcast.hear(idle_packet(), encoder.channel_1());
    EXPECT_TRUE(broadcast.seen.empty()) << address.number;
    broadcast.hear(idle_packet(), encoder.channel_1());
    EXPECT_EQ(broadcast.seen, one) << address.number;
    Reading answer;
    answer.hear(speed_packet(address, 10, true), encoder.channel_2(80));
    ASSERT_FALSE(answer.seen.empty()) << address.number;
    EXPECT_EQ(std::set<Address>(answer.seen.begin(), answer.seen.end()),
              std::set<Address>(one.begin(), one.end()));
  };
  for (unsigned number = 1; number <= 127; ++number) check({number, false});
  for (unsigned number = 1; number <= 10239; ++number) check({number, true});
}

TEST(RailComEncoder, writes_each_datagram_as_it_is_read) {
  std::set<std::string> different;
  for (unsigned id = 0; id <= 15; ++id) {
    for (unsigned value = 0; value <= 255; ++value) {
      const auto bytes = RailComEncoder::datagram(id, static_cast<std::uint8_t>(value));
      ASSERT_EQ(bytes.size(), 2u);
      for (const auto byte : bytes_of(bytes)) EXPECT_EQ(std::popcount(byte), 4);
      different.insert(bytes);
    }
  }
  EXPECT_EQ(different.size(), 16u * 256u);

  using Signal = RailComDecoder::Feedback& (RailComDecoder::*)();
  struct {
    unsigned id;
    Signal signal;
    unsigned payload, value;
  } const cases[] = {
      {3, &RailComDecoder::signal_id3_low, 0x45, 0x45},
      {3, &RailComDecoder::signal_id3_high, 0xc5, 0x45},
      {4, &RailComDecoder::signal_id4, 0xa1, 0xa1},
      {5, &RailComDecoder::signal_id5, 0xff, 0xff},
      {6, &RailComDecoder::signal_id6, 0x00, 0x00},
      {7, &RailComDecoder::signal_id7_high, 0x81, 0x01},
      {8, &RailComDecoder::signal_id8, 0x33, 0x33},
  };
  for (const auto& one : cases) {
    RailComDecoder decoder;
    std::vector<unsigned> values;
    (decoder.*one.signal)().connect(
        [&](const Address&, std::uint8_t value) { values.push_back(value); });
    decoder.decode(speed_packet({3, false}, 0, true),
                   RailComEncoder::datagram(one.id, static_cast<std::uint8_t>(one.payload)));
    EXPECT_EQ(values, std::vector<unsigned>{one.value}) << one.id;
  }
}

// The packets as RCN-212 has them, the check byte worked out by hand.
TEST(RailComEncoder, writes_speed_packets_as_the_standard_has_them) {
  EXPECT_EQ(bytes_of(speed_packet({3, false}, 0, true)), (Bytes{0x03, 0x3f, 0x80, 0xbc}));
  EXPECT_EQ(bytes_of(speed_packet({3, false}, 126, true)), (Bytes{0x03, 0x3f, 0xff, 0xc3}));
  EXPECT_EQ(bytes_of(speed_packet({3, false}, 1, false)), (Bytes{0x03, 0x3f, 0x02, 0x3e}));
  EXPECT_EQ(bytes_of(speed_packet({3, true}, 1, false)), (Bytes{0xc0, 0x03, 0x3f, 0x02, 0xfe}));
  EXPECT_EQ(bytes_of(speed_packet({1000, true}, 0, true)), (Bytes{0xc3, 0xe8, 0x3f, 0x80, 0x94}));
  EXPECT_EQ(bytes_of(stop_packet({3, false}, false)), (Bytes{0x03, 0x3f, 0x01, 0x3d}));
}

}  // namespace
}  // namespace zemblar::simulator
