#include "simulator/bus/reader_hardware.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "simulator/stations/hex.h"
#include "simulator/trains/railcom_encoder.h"
#include "tests/simulator/tessara_host.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;
using test::from_hex;

/// What a host makes of the poll answers, straight from the description of the records.
class Listener {
 public:
  explicit Listener(unsigned inputs) : states(inputs), last_(inputs) {}

  struct Heard {
    unsigned input;
    std::string dcc;
    std::string bytes;
    bool operator==(const Heard&) const = default;
  };
  void hear(const std::string& answer) {
    bytes_ = answer;
    position_ = bit_ = 0;
    while (position_ < bytes_.size()) hear_record();
  }

  std::vector<unsigned> states;
  std::vector<Heard> heard;  // without the empty answers
  unsigned records = 0;

 private:
  void hear_record() {
    const auto head = next();
    if (head & 0x80) return;
    ++records;
    std::string dcc;
    for (unsigned i = 0; i <= (head & 0x3f); ++i) dcc += static_cast<char>(next());
    if (head & 0x40) {
      for (auto& state : states) state = bits(2);
      align();
    }
    std::vector<unsigned> speaking;
    for (unsigned i = 0; i < states.size(); ++i) {
      if (states[i] > 1) speaking.push_back(i);
    }
    std::vector<unsigned> repeats;
    for (std::size_t i = 0; i < speaking.size(); ++i) repeats.push_back(bits(2));
    align();
    std::vector<unsigned> lengths;
    for (const auto repeat : repeats) lengths.push_back(repeat == 0 ? bits(4) : 0);
    align();
    for (std::size_t i = 0; i < speaking.size(); ++i) {
      auto& last = last_[speaking[i]];
      const auto place = repeats[i] == 0 ? 2u : repeats[i] - 1;
      std::rotate(last.begin(), last.begin() + place, last.begin() + place + 1);
      if (repeats[i] == 0) {
        last[0].clear();
        while (lengths[i]-- > 0) last[0] += static_cast<char>(next());
      }
      if (!last[0].empty()) heard.push_back({speaking[i], dcc, last[0]});
    }
  }
  unsigned next() { return static_cast<unsigned char>(bytes_.at(position_++)); }
  unsigned bits(unsigned count) {
    const auto value =
        static_cast<unsigned char>(bytes_.at(position_)) >> bit_ & ((1u << count) - 1);
    bit_ += count;
    if (bit_ == 8) align();
    return value;
  }
  void align() {
    if (std::exchange(bit_, 0u) != 0) ++position_;
  }

  std::string bytes_;
  std::size_t position_ = 0;
  unsigned bit_ = 0;
  std::vector<std::array<std::string, 3>> last_;
};

std::string ask(ReaderHardware& reader, const char* message) {
  const auto answer = reader.execute(from_hex(message));
  return answer ? hex(*answer) : "refused";
}

TEST(ReaderHardware, answers_what_a_host_asks) {
  VirtualClock clock;
  ReaderHardware reader(9);
  reader.options.serial_nr = "xy";
  reader.options.speeds = {0x8003, 0x0002};  // the second word has speed 2, and takes 1 away
  const struct {
    const char* message;
    const char* answer;
    unsigned speed = 0;
  } cases[] = {
      {"00", "51 56 52 4e 80 03 00 02 01 00 08 01"},
      {"02", "78 79"},
      {"04 01", "refused"},
      {"04 02", "", 2},
      {"06 01", "refused", 2},
      {"06 00", "", 2},
      {"08 ff", "refused", 2},
      {"08 ff 01", "", 2},
      {"0a", "", 2},
      {"09", "", 2},
      {"0a", "42 ff 00 ff 00 00 00", 2},
      {"0b", "refused", 2},
  };
  for (const auto& [message, answer, speed] : cases) {
    EXPECT_EQ(answer, ask(reader, message)) << message;
    EXPECT_EQ(speed, reader.speed()) << message;
  }
}

// The packet is 0102, idle packets are ff00ff.
TEST(ReaderHardware, writes_records_of_what_the_rails_tell) {
  VirtualClock clock;
  ReaderHardware reader(3);
  auto& a = reader.input(0);
  auto& b = reader.input(2);
  const auto dcc = from_hex("01 02");
  const struct {
    std::function<void()> happens;
    const char* answer;
  } cases[] = {
      {[&] { ask(reader, "09"); }, "42 ff 00 ff 00"},
      {[&] { a.set_current(true, 1); }, "42 ff 00 ff 01"},
      {[&] { a.set_current(true, 2); }, ""},
      {[&] { a.receive(dcc, "P"); }, "41 01 02 03 00 01 50"},
      {[&] { a.receive(dcc, "P"); }, "01 01 02 01"},
      {[&] { a.receive(dcc, ""); }, "01 01 02 00 00"},
      {[&] { a.receive(dcc, "QR"); }, "01 01 02 00 02 51 52"},
      {[&] { a.receive(dcc, "P"); }, "01 01 02 03"},
      {[&] { a.receive(dcc, "QR"); }, "01 01 02 02"},
      {[&] { b.set_current(true, 1); }, "42 ff 00 ff 13 03"},
      {[&] { b.receive(dcc, "S"); }, "41 01 02 23 01 01 53"},
      {[&] { ask(reader, "08 fe"); }, "42 ff 00 ff 20 00 00"},
      {[&] { b.set_current(false); }, "42 ff 00 ff 00"},
      {[&] { b.receive(dcc, "S"); }, ""},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    cases[i].happens();
    EXPECT_EQ(cases[i].answer, ask(reader, "0a")) << "case " << i;
  }
}

// The host understands all, as it was, however seldom it asks; and what it is told last holds also
// when records were dropped, and after the stream was reset.
TEST(ReaderHardware, stays_in_step_with_its_host) {
  for (const unsigned inputs : {1u, 4u, 5u, 8u, 17u}) {
    VirtualClock clock;
    std::mt19937 random(inputs);
    ReaderHardware reader(inputs);
    reader.options.empty_records = inputs % 2 == 0;
    reader.options.other_packets = inputs % 4 == 1 ? 100 : 0;
    reader.options.longest_answer = 50;
    Listener host(inputs);
    std::vector<Listener::Heard> said;
    (void)reader.execute("\x09");
    for (int step = 0; step < 4000; ++step) {
      const auto i = static_cast<unsigned>(random() % inputs);
      auto& input = reader.input(i);
      if (random() % 10 == 0) input.set_current(random() % 3 > 0, 1 + random() % 2);
      const std::string bytes(random() % 5, static_cast<char>('a' + random() % 2));
      input.receive(speed_packet({i + 1, random() % 2 == 0}, 3, true), bytes);
      if (input.current() && !bytes.empty()) {
        said.push_back({i, "", bytes});
      }
      clock.advance(std::chrono::milliseconds(random() % 30));
      if (random() % 8 == 0) {
        if (const auto answer = reader.execute("\x0a"); !answer->empty()) host.hear(*answer);
      }
      if (random() % 1000 == 0) {
        for (std::string answer; !(answer = *reader.execute("\x0a")).empty();) host.hear(answer);
        (void)reader.execute("\x09");
      }
    }
    for (std::string answer; !(answer = *reader.execute("\x0a")).empty();) host.hear(answer);
    for (unsigned i = 0; i < inputs; ++i) EXPECT_EQ(reader.state(i), host.states[i]);
    ASSERT_GE(said.size(), host.heard.size());
    EXPECT_EQ(reader.dropped() == 0, said.size() == host.heard.size()) << inputs;
    auto at = said.begin();
    for (const auto& heard : host.heard) {
      at = std::find_if(at, said.end(), [&](const auto& one) {
        return one.input == heard.input && one.bytes == heard.bytes;
      });
      ASSERT_NE(at, said.end()) << inputs << " inputs: heard what nobody said";
      ++at;
    }
  }
}

}  // namespace
}  // namespace zemblar::simulator
