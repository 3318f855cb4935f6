#include "devices/liusb/liusb_codec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>

namespace zemblar::liusb {
namespace {

const Bytes version_answer = {0xff, 0xfe, 0x02, 0x10, 0x01, 0x13};
const Bytes status_answer = {0xff, 0xfe, 0x62, 0x22, 0x44, 0x04};
const Bytes done_answer = {0xff, 0xfe, 0x01, 0x04, 0x05};
const Bytes power_broadcast = {0xff, 0xfd, 0x61, 0x01, 0x60};

Bytes operator+(Bytes left, const Bytes& right) {
  std::ranges::copy(right, std::back_inserter(left));
  return left;
}

std::vector<Bytes> answers_in(const std::vector<Bytes>& pieces) {
  AnswerReader reader;
  std::vector<Bytes> answers;
  for (const auto& piece : pieces) {
    reader.add(piece);
    while (auto answer = reader.next()) answers.push_back(*std::move(answer));
  }
  return answers;
}

const Bytes version = {0x02, 0x10, 0x01};
const Bytes done = {0x01, 0x04};

// --- Frames ---

TEST(LIUSBCodec, frames_a_message_with_header_and_check_byte) {
  EXPECT_EQ((Bytes{0xff, 0xfe, 0xf0, 0xf0}), frame(interface_version));
  EXPECT_EQ((Bytes{0xff, 0xfe, 0x21, 0x24, 0x05}), frame(station_status));
  EXPECT_EQ((Bytes{0xff, 0xfe, 0xe4, 0x13, 0xc0, 0x64, 0x80, 0xd3}),
            frame(drive(Address(100, true), DecoderType::dcc128, 0, Direction::Forwards)));
}

TEST(LIUSBCodec, finds_answers_among_broadcasts_and_garbage) {
  const struct {
    const char* what;
    Bytes stream;
    std::vector<Bytes> answers;
  } cases[] = {
      {"two in a row", version_answer + done_answer, {version, done}},
      {"after a broadcast", power_broadcast + done_answer, {done}},
      {"after stray bytes", Bytes{0x00, 0xff, 0x13, 0xff, 0xff} + done_answer, {done}},
      {"after one with a wrong check byte",
       Bytes{0xff, 0xfe, 0x01, 0x04, 0x06} + done_answer,
       {done}},
      {"after a broadcast with a wrong check byte",
       Bytes{0xff, 0xfd, 0x61, 0x01, 0x61} + done_answer,
       {done}},
      {"swallowed by a stray start that is long enough", Bytes{0xff, 0xfe, 0x0f} + done_answer, {}},
      {"and found when enough has come",
       Bytes{0xff, 0xfe, 0x06} + done_answer + done_answer,
       {done, done}},
      {"the longest", frame(Bytes{0x4f} + Bytes(15, 0xff)), {Bytes{0x4f} + Bytes(15, 0xff)}},
  };
  for (const auto& [what, stream, answers] : cases) {
    EXPECT_EQ(answers, answers_in({stream})) << what;
    for (std::size_t cut = 0; cut <= stream.size(); ++cut) {
      const auto middle = stream.begin() + static_cast<std::ptrdiff_t>(cut);
      EXPECT_EQ(answers, answers_in({{stream.begin(), middle}, {middle, stream.end()}}))
          << what << ", cut after " << cut;
    }
  }
}

TEST(LIUSBCodec, waits_for_the_end_of_an_answer) {
  for (const auto& sample : {version_answer, status_answer, done_answer}) {
    for (auto end = sample.begin(); end != sample.end(); ++end) {
      EXPECT_TRUE(answers_in({{sample.begin(), end}}).empty());
    }
    EXPECT_EQ(1u, answers_in({sample}).size());
  }
}

TEST(LIUSBCodec, passes_no_answer_with_one_wrong_bit_and_finds_its_way_back) {
  const unsigned seed = 20;
  std::mt19937 random(seed);
  for (int round = 0; round < 5000; ++round) {
    auto broken = round % 2 ? version_answer : status_answer;
    const auto at = random() % broken.size();
    broken[at] = static_cast<std::uint8_t>(broken[at] ^ 1u << random() % 8);
    EXPECT_TRUE(answers_in({broken}).empty()) << "seed " << seed << ", round " << round;
    // What a wrong length swallows ends within four answers.
    const auto answers =
        answers_in({broken + version_answer + version_answer + version_answer + version_answer});
    ASSERT_FALSE(answers.empty()) << "seed " << seed << ", round " << round;
    EXPECT_EQ(version, answers.back());
  }
}

// --- Locomotives ---

TEST(LIUSBCodec, turns_speeds_into_the_steps_of_each_mode) {
  using enum DecoderType;
  const struct {
    DecoderType type;
    std::uint32_t speed;
    unsigned byte;
  } cases[] = {
      // 1 to 8 of 126 come out as 1, which the station takes for an emergency stop.
      {dcc14, 1, 1},     {dcc14, 8, 1},      {dcc14, 9, 2},      {dcc14, 63, 8},
      {dcc14, 125, 14},  {dcc14, 126, 15},   {dcc27, 1, 0x11},   {dcc27, 4, 0x11},
      {dcc27, 5, 0x02},  {dcc27, 10, 0x12},  {dcc27, 63, 0x08},  {dcc27, 126, 0x0f},
      {dcc28, 1, 0x11},  {dcc28, 4, 0x11},   {dcc28, 5, 0x02},   {dcc28, 9, 0x12},
      {dcc28, 63, 0x18}, {dcc28, 125, 0x0f}, {dcc28, 126, 0x1f}, {dcc128, 1, 2},
      {dcc128, 63, 64},  {dcc128, 126, 127},
  };
  for (const auto& [type, speed, byte] : cases) {
    EXPECT_EQ(byte, speed_byte(type, speed, Direction::Reverse))
        << "mode " << static_cast<int>(type) << ", speed " << speed;
    EXPECT_EQ(byte | 0x80, speed_byte(type, speed, Direction::Forwards));
  }
  for (const auto type : {dcc14, dcc27, dcc28, dcc128}) {
    EXPECT_EQ(0, speed_byte(type, 0, Direction::Reverse));
    EXPECT_EQ(0x80, speed_byte(type, 0, Direction::Forwards));
    EXPECT_EQ(1, speed_byte(type, DecoderUpdate::emergency_stop, Direction::Reverse));
    EXPECT_EQ(0x81, speed_byte(type, DecoderUpdate::emergency_stop, Direction::Forwards));
    EXPECT_EQ(0x10 + static_cast<int>(type), drive(Address(3), type, 0, Direction::Reverse)[1]);
  }
}

TEST(LIUSBCodec, addresses_what_the_station_has) {
  const struct {
    Address address;
    std::optional<Bytes> bytes;
  } cases[] = {
      {Address(1), Bytes{0, 1}},
      {Address(99), Bytes{0, 99}},
      {Address(100, false), {}},
      {Address(127), {}},
      {Address(3, true), {}},
      {Address(99, true), {}},
      {Address(100, true), Bytes{0xc0, 0x64}},
      {Address(9999), Bytes{0xe7, 0x0f}},
      {Address(10000), {}},
      {Address(Address::Kind::accessory, 3), {}},
  };
  for (const auto& [address, bytes] : cases) {
    EXPECT_EQ(bytes.has_value(), can_drive(address)) << address.get_addr();
    if (!bytes) continue;
    const auto message = drive(address, DecoderType::dcc28, 1, Direction::Reverse);
    EXPECT_EQ((Bytes{0xe4, 0x12} + *bytes + Bytes{0x11}), message);
  }
}

TEST(LIUSBCodec, sends_functions_by_groups) {
  constexpr auto all = 0x1fffffffu;
  const struct {
    unsigned first, last, id;
    std::uint32_t mask;
    unsigned all_bits;
  } cases[] = {{0, 4, 0x20, 0x7c, 0x1f},
               {5, 8, 0x21, 0x780, 0x0f},
               {9, 12, 0x22, 0x7800, 0x0f},
               {13, 20, 0x23, 0x7f8000, 0xff},
               {21, 28, 0x28, 0x7f800000, 0xff}};
  const auto bits = [](const FunctionGroup& group, std::uint32_t functions) {
    return set_functions(Address(3), group, functions).back();
  };
  for (const auto& [first, last, id, mask, all_bits] : cases) {
    for (auto fn = first; fn <= last; ++fn) {
      const auto& group = group_of(fn);
      EXPECT_EQ(id, group.id) << fn;
      EXPECT_EQ(mask, group.mask()) << fn;
      const auto place = fn == 0 ? 4 : fn - (first == 0 ? 1 : first);
      EXPECT_EQ(1u << place, bits(group, 1u << fn)) << fn;
      EXPECT_EQ(all_bits, bits(group, all));
      EXPECT_EQ(all_bits & ~(1u << place), bits(group, all & ~(1u << fn))) << fn;
    }
  }
  EXPECT_EQ((Bytes{0xe4, 0x23, 0xc4, 0xb0, 0x81}),
            set_functions(Address(1200), group_of(13), 1u << 13 | 1u << 20));
}

TEST(LIUSBCodecDeathTest, asserts_that_an_address_is_one_that_the_station_has) {
  const auto to = [](Address address) {
    (void)drive(address, DecoderType::dcc128, 0, Direction::Reverse);
  };
  EXPECT_DEATH(to(Address(100, false)), "address.get_addr\\(\\) < 100");
  EXPECT_DEATH(to(Address(10000)), "address.get_addr\\(\\) < 10000");
  EXPECT_DEATH((void)energise(257, 1, true), "\\(address >= 1\\) && \\(address <= 256\\)");
  EXPECT_DEATH((void)energise(1, 5, true), "\\(output >= 1\\) && \\(output <= 4\\)");
}

// --- Accessories and answers ---

TEST(LIUSBCodec, switches_outputs_in_pairs_of_coils) {
  EXPECT_EQ((Bytes{0x52, 0x00, 0x80}), energise(1, 1, false));
  EXPECT_EQ((Bytes{0x52, 0x00, 0x88}), release(1, 1, false));
  EXPECT_EQ((Bytes{0x52, 0xff, 0x87}), energise(256, 4, true));
  EXPECT_EQ((Bytes{0x52, 0xff, 0x8f}), release(256, 4, true));
}

TEST(LIUSBCodec, reads_the_status_of_the_station_from_nothing_else) {
  const auto power = [](std::uint8_t status) { return read_status({0x62, 0x22, status})->power; };
  EXPECT_TRUE(power(0x00));
  EXPECT_TRUE(power(0x44));
  EXPECT_FALSE(power(0x01));
  EXPECT_FALSE(power(0x02));
  EXPECT_TRUE(read_status({0x62, 0x22, 0x44})->wants_start_mode);
  EXPECT_FALSE(read_status({0x62, 0x22, 0x40})->wants_start_mode);
  for (const Bytes& other :
       {Bytes{0x61, 0x22}, Bytes{0x62, 0x21, 0}, Bytes{0x63, 0x22, 0}, Bytes{}}) {
    EXPECT_FALSE(read_status(other));
  }
  EXPECT_TRUE(is_done({0x01, 0x04}));
  EXPECT_FALSE(is_done({0x01, 0x05}));
  EXPECT_FALSE(is_done({0x61, 0x81}));
}

}  // namespace
}  // namespace zemblar::liusb
