#include "devices/tessara/tessara_codec.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace zemblar::tessara {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

/// The places of the speeds that a table has.
std::vector<std::size_t> indexes(const SpeedTable& table) {
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < table.speeds.size(); ++i) {
    if (table.speeds[i]) found.push_back(i);
  }
  return found;
}

TEST(TessaraCodec, reads_speed_tables_word_by_word) {
  const auto one = read_speed_table("BUS\0\x00\x1f\x01"s);
  EXPECT_THAT(indexes(one), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_EQ(6u, one.end);
  // The second word begins at entry 1 and replaces what the first one said of 1 to 14.
  const auto two = read_speed_table("QVRN\xc0\x07\x40\x01"s);
  EXPECT_THAT(indexes(two), ElementsAre(0, 1, 15));
  EXPECT_EQ(8u, two.end);

  for (const auto& broken : {"QVRN"s, "QVRN\x00"s, "QVRN\x80\x01"s, "QVRN\x80\x01\x00"s}) {
    try {
      static_cast<void>(read_speed_table(broken));
      ADD_FAILURE() << broken.size();
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ("Broken Speed Table", error.what());
    }
  }
}

TEST(TessaraCodec, reads_who_a_device_is) {
  const auto bus = read_bus_info("BUS\0\x00\x1f\x01\x00\x04"s);
  ASSERT_TRUE(bus);
  EXPECT_FALSE(bus->speed_scan);
  EXPECT_EQ(4, bus->max_speed);
  EXPECT_TRUE(read_bus_info("BUS\0\x00\x1f\x01\x01\x00more"s)->speed_scan);
  for (const auto& other : {"BUS"s, "BUS\0\x00"s, "BUS\0\x00\x1f\x02\x00\x04"s,
                            "BUS\0\x00\x1f\x01\x00"s, "BUSX\x00\x1f\x01\x00\x04"s}) {
    EXPECT_FALSE(read_bus_info(other)) << other;
  }

  const auto reader = read_reader_info("QVRN\x80\x01\x00\x0f\x01\x77\x0f\x03"s);
  ASSERT_TRUE(reader);
  EXPECT_EQ(16, reader->input_count);
  EXPECT_EQ(3, reader->encodings);
  EXPECT_FALSE(read_reader_info("QVRN\x00\x01\x01\x00\xff\x01"s)) << "256 inputs";
  EXPECT_FALSE(read_reader_info("QVRN\x00\x01\x01\x00\x0f"s));
  EXPECT_FALSE(read_reader_info("BUS\0\x00\x01\x01\x00\x0f\x01"s));
}

/// How messages of that length go out when the master takes `capacity` bytes of each frame: the
/// commands and how many bytes follow each.
std::vector<std::pair<int, std::size_t>> frames(std::size_t length, std::size_t capacity) {
  std::string message(length, ' ');
  for (std::size_t i = 0; i < length; ++i) message[i] = static_cast<char>(i % 251);
  Relay relay(0x42, message);
  std::vector<std::pair<int, std::size_t>> sent;
  std::string taken;
  while (!relay.done()) {
    const auto frame = relay.frame();
    EXPECT_LE(frame.size(), 256u);
    sent.emplace_back(frame[0], frame.size() - 1);
    EXPECT_FALSE(relay.accept(frame.size())) << "more than was offered";
    EXPECT_TRUE(relay.accept(0));
    EXPECT_EQ(frame, relay.frame()) << "nothing taken, the same again";
    const auto count = std::min(capacity, frame.size() - 1);
    taken += frame.substr(1, count);
    EXPECT_TRUE(relay.accept(count));
  }
  EXPECT_EQ("\x42" + message, taken);
  return sent;
}

TEST(TessaraCodec, cuts_messages_into_frames) {
  using testing::Pair;
  EXPECT_THAT(frames(0, 256), ElementsAre(Pair(0x0b, 1)));
  EXPECT_THAT(frames(253, 256), ElementsAre(Pair(0x0b, 254)));
  EXPECT_THAT(frames(254, 256), ElementsAre(Pair(0x0a, 255))) << "nothing is left for a last part";
  EXPECT_THAT(frames(254, 254), ElementsAre(Pair(0x0a, 255), Pair(0x09, 1)));
  EXPECT_THAT(frames(509, 256), ElementsAre(Pair(0x0a, 255), Pair(0x08, 255)));
  EXPECT_THAT(frames(508, 256), ElementsAre(Pair(0x0a, 255), Pair(0x09, 254)));
  EXPECT_THAT(frames(600, 256), ElementsAre(Pair(0x0a, 255), Pair(0x08, 255), Pair(0x09, 91)));
  EXPECT_THAT(frames(3, 1),
              ElementsAre(Pair(0x0b, 4), Pair(0x09, 3), Pair(0x09, 2), Pair(0x09, 1)));
}

TEST(TessaraCodec, tells_answers_from_failures) {
  EXPECT_EQ(258u, accepted_count("\x01\x02"));
  EXPECT_EQ(0u, accepted_count("\0\0"s));
  EXPECT_FALSE(accepted_count(""));
  EXPECT_FALSE(accepted_count("\x01"));
  EXPECT_FALSE(accepted_count("\0\x01\0"s));

  using Status = Fetched::Status;
  const auto answer = "\x01rest"s;
  EXPECT_EQ(Status::more, read_fetched(answer).status);
  EXPECT_EQ("rest", read_fetched(answer).data);
  EXPECT_EQ(Status::complete, read_fetched("\0"s).status);
  EXPECT_EQ(Status::failed, read_fetched("\x02").status);
  EXPECT_EQ(Status::failed, read_fetched("").status);

  std::vector<bool> inputs(10);
  inputs[0] = inputs[9] = true;
  EXPECT_EQ("\x08\x01\x02"s, enable_inputs(inputs));
  EXPECT_EQ("\x08"s, enable_inputs({}));
}

}  // namespace
}  // namespace zemblar::tessara
