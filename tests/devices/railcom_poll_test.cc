#include "devices/tessara/railcom_poll.h"

#include <gmock/gmock.h>

#include <utility>
#include <vector>

#include "devices/tessara/bitstream_reader.h"
#include "simulator/stations/hex.h"
#include "tests/simulator/tessara_host.h"

namespace zemblar {
namespace {

using simulator::hex;
using simulator::test::from_hex;
using testing::ElementsAre;
using Log = std::vector<std::string>;
using States = std::vector<std::uint8_t>;

/// Writes down what it is told, until it has had enough.
class Listener : public RailComPollSink {
 public:
  explicit Listener(States begin, std::size_t lines = 1000)
      : states(std::move(begin)), enough_(lines) {}

  unsigned input_count() const override { return static_cast<unsigned>(states.size()); }
  std::uint8_t state(unsigned input) const override { return states[input]; }
  bool set_state(unsigned input, std::uint8_t state) override {
    states[input] = state;
    return note(std::to_string(input) + '=' + std::to_string(state));
  }
  bool on_packet(unsigned input, const std::string& dcc, const std::string& bytes) override {
    if (forgetful) states.assign(states.size(), 0);
    return note(std::to_string(input) + ' ' + hex(dcc) + " -> " + hex(bytes));
  }
  bool on_repeat(unsigned input, const std::string& dcc, unsigned repeat) override {
    return note(std::to_string(input) + ' ' + hex(dcc) + " again " + std::to_string(repeat));
  }

  /// The answer, and "short" where it ended too early.
  Log hear(const std::string& answer) {
    try {
      read_poll_answer(answer, *this);
    } catch (const BitstreamReader::EOS&) {
      log.emplace_back("short");
    }
    return log;
  }

  States states;
  Log log;
  bool forgetful = false;  // the first answer that it hears ends all inputs

 private:
  bool note(const std::string& line) {
    log.push_back(line);
    return log.size() < enough_;
  }

  std::size_t enough_;
};

TEST(RailComPoll, reads_records_of_all_kinds) {
  const struct {
    const char* what;
    States before;
    const char* answer;
    Log told;
  } cases[] = {
      {"nothing has happened", {2, 2}, "", {}},
      {"empty records", {2, 2}, "80 ff c1 80", {}},
      {"a packet that nobody could answer", {0, 1}, "01 03 3f", {}},
      {"inputs in state 0 or 1 say nothing", {0, 2, 1}, "00 ff 01", {"1 ff again 1"}},
      {"all places in the history",
       {2, 3, 2},
       "00 ff 39",
       {"0 ff again 1", "1 ff again 2", "2 ff again 3"}},
      {"the fifth input is in the next byte",
       {2, 2, 2, 2, 2},
       "00 ff 55 02",
       {"0 ff again 1", "1 ff again 1", "2 ff again 1", "3 ff again 1", "4 ff again 2"}},
      {"answers after all their lengths, the first in the low bits",
       {2, 2, 2},
       "00 ff 00 12 00 ac aa a9",
       {"0 ff -> ac aa", "1 ff -> a9", "2 ff -> "}},
      {"new ones between old ones",
       {2, 2, 2},
       "00 ff 04 21 01 02 03",
       {"0 ff -> 01", "1 ff again 1", "2 ff -> 02 03"}},
      {"an empty answer at the very end", {2}, "00 ff 00 00", {"0 ff -> "}},
      {"new states count at once",
       {0, 2, 0},
       "40 ff 12 00 01 a9",
       {"0=2", "1=0", "2=1", "0 ff -> a9"}},
      {"states stay for the next record",
       {0, 0},
       "41 03 3f 0b 05 80 00 ff 0a",
       {"0=3", "1=2", "0 03 3f again 1", "1 03 3f again 1", "0 ff again 2", "1 ff again 2"}},
      {"the states end too early",
       {0, 0, 0, 0, 0},
       "40 ff e4",
       {"0=0", "1=1", "2=2", "3=3", "short"}},
      {"the packet ends too early", {2}, "02 03 3f", {"short"}},
      {"the lengths are missing", {2, 2}, "00 ff 01", {"short"}},
      {"the last answer ends too early", {2, 2}, "00 ff 00 21 ac a9", {"0 ff -> ac", "short"}},
  };
  for (const auto& c : cases) {
    Listener listener(c.before);
    EXPECT_EQ(c.told, listener.hear(from_hex(c.answer))) << c.what;
  }
}

TEST(RailComPoll, reads_an_answer_to_its_end_whatever_comes_of_it) {
  Listener forgetful({2, 2});
  forgetful.forgetful = true;
  EXPECT_THAT(forgetful.hear(from_hex("00 ff 00 11 ac aa 00 03 09")),
              ElementsAre("0 ff -> ac", "1 ff -> aa", "0 03 again 1", "1 03 again 2"));

  Listener soon_fed_up({2, 2}, 3);
  EXPECT_THAT(soon_fed_up.hear(from_hex("00 ff 05 40 ff 0f 05")),
              ElementsAre("0 ff again 1", "1 ff again 1", "0=3"))
      << "nothing is told to somebody who has ended";
}

}  // namespace
}  // namespace zemblar
