#include <gmock/gmock.h>

#include <functional>
#include <utility>

#include "devices/default_device.h"
#include "devices/tessara/device_tessara_railcom_reader.h"
#include "locomotives/lok.h"
#include "simulator/trains/railcom_encoder.h"
#include "support/layout_fixture.h"

namespace zemblar {
namespace {

using simulator::RailComEncoder;
using testing::ElementsAre;
using testing::IsEmpty;
using Input = DeviceTessaraRailComReaderInput;
using Log = std::vector<std::string>;

/// What nobody in particular is told.
const std::string idle("\xff\x00\xff", 3);

/// Both halves of a short address.
std::string answer_of(std::uint8_t address) {
  return RailComEncoder::datagram(1, 0) + RailComEncoder::datagram(2, address);
}

class RailComReaderInputTest : public test::LayoutTest {
 protected:
  RailComReaderInputTest() {
    for (std::uint8_t address = 3; address <= 5; ++address) own(address, add_lok(address));
    follow();
  }

  // What it tells at its end is still written down.
  ~RailComReaderInputTest() override {
    on_line = {};
    reader->destroy();
  }

  void follow() {
    const auto note_lok = [this](const char* text) {
      return [this, text](Lok* lok) { note(text + lok->get_name().raw()); };
    };
    input->signal_changed().connect([this] { note(input->occupied() ? "occupied" : "free"); });
    input->signal_state_changed().connect(
        [this] { note("side " + std::to_string(input->orientation())); });
    input->signal_arrived().connect(note_lok("arrived "));
    input->signal_left().connect(note_lok("left "));
  }
  Lok* add_lok(std::uint8_t address) {
    auto* lok = layout().get_loks().add(new Lok);
    lok->set_name("lok " + std::to_string(address));
    return lok;
  }
  static void own(std::uint8_t address, Lok* lok) {
    auto& station = layout().get_default_device();
    station.remove_lok(Address(address), station.find_lok(Address(address)));
    if (lok) station.add_lok(Address(address), lok);
  }
  static Lok* owner(std::uint8_t address) {
    return layout().get_default_device().find_lok(Address(address));
  }

  void hear(std::uint8_t address) { input->on_packet(idle, answer_of(address)); }
  void note(const std::string& line) {
    log.push_back(line);
    if (on_line) on_line();
  }
  Log take() { return std::exchange(log, {}); }
  std::vector<std::string> detected() const {
    std::vector<std::string> names;
    for (const auto* lok : input->detected()) names.push_back(lok->get_name());
    return names;
  }

  DeviceTessaraRailComReader* reader = layout().get_devices().add(new DeviceTessaraRailComReader);
  Input* input = reader->add(new Input);
  Log log;
  std::function<void()> on_line;
};

TEST_F(RailComReaderInputTest, tells_current_and_side_and_covers_gaps_of_a_quarter_of_a_second) {
  EXPECT_FALSE(input->occupied()) << "nobody knows of any current yet";
  const struct {
    int state;  // -1 for a tick of 50 ms
    Log told;
  } steps[] = {
      {-1, {}},
      {0, {}},
      {1, {"occupied", "side 0"}},
      {1, {}},
      {2, {"occupied", "side 1"}},
      {-1, {}},
      {3, {"occupied", "side 2"}},
      {0, {"occupied", "side 0"}},
      {-1, {}},
      {-1, {}},
      {-1, {}},
      {2, {"occupied", "side 1"}},
      {0, {"occupied", "side 0"}},
      {-1, {}},
      {-1, {}},
      {-1, {}},
      {-1, {}},
      {-1, {}},
      {-1, {"free"}},
      {-1, {}},
  };
  for (std::size_t i = 0; i < std::size(steps); ++i) {
    steps[i].state < 0 ? input->tick(50) : input->set_state(static_cast<unsigned>(steps[i].state));
    EXPECT_EQ(steps[i].told, take()) << i;
  }
}

TEST_F(RailComReaderInputTest, detects_a_locomotive_until_a_second_after_its_last_answer) {
  hear(3);
  EXPECT_THAT(take(), ElementsAre("occupied", "arrived lok 3"));
  input->tick(600);
  hear(3);
  hear(99);
  EXPECT_THAT(take(), IsEmpty()) << "it is known, and nobody has the other address";
  hear(5);
  hear(4);
  EXPECT_THAT(take(), ElementsAre("occupied", "arrived lok 5", "occupied", "arrived lok 4"));
  EXPECT_THAT(detected(), ElementsAre("lok 3", "lok 4", "lok 5"));
  input->tick(1000);
  EXPECT_THAT(take(), IsEmpty());
  hear(4);
  input->tick(1);
  EXPECT_THAT(take(), ElementsAre("left lok 3", "occupied", "left lok 5", "occupied"));
  input->tick(1000);
  EXPECT_THAT(take(), ElementsAre("left lok 4", "free"));
}

TEST_F(RailComReaderInputTest, follows_an_address_to_its_new_owner) {
  hear(3);
  take();
  own(3, owner(4));
  hear(3);
  EXPECT_THAT(take(), ElementsAre("left lok 3", "free", "occupied", "arrived lok 4"));
  own(3, nullptr);
  hear(3);
  EXPECT_THAT(take(), ElementsAre("left lok 4", "free"));

  auto* station = layout().get_devices().add(new DeviceTessaraRailComReader);
  station->add_lok(Address(3), owner(5));
  reader->set_dcc_device(station);
  hear(3);
  hear(4);
  EXPECT_THAT(take(), ElementsAre("occupied", "arrived lok 5"));
  station->destroy();
  EXPECT_EQ(reader->get_dcc_device(), nullptr);
  hear(4);
  EXPECT_THAT(take(), ElementsAre("occupied", "arrived lok 4"));

  on_line = [this] {
    if (log.size() > 1) return;
    own(5, owner(4));
    hear(5);
  };
  hear(5);
  EXPECT_THAT(take(),
              ElementsAre("occupied", "left lok 5", "occupied", "occupied", "arrived lok 4"))
      << "before its arrival was told";
}

// Each answer names another locomotive, and the time between two is long enough to forget it.
TEST_F(RailComReaderInputTest, finds_repeated_answers_where_the_reader_has_them) {
  const struct {
    unsigned heard;   // an address; 0 for none, which counts as an answer
    unsigned repeat;  // instead, if not 0
    const char* seen;
  } steps[] = {
      {0, 1, ""},  {0, 3, ""},                // nothing has been heard yet
      {3, 0, "3"}, {4, 0, "4"}, {5, 0, "5"},  // 5 4 3
      {0, 1, "5"}, {0, 2, "4"}, {0, 2, "5"},  // 5 4 3
      {0, 3, "3"}, {0, 3, "4"}, {0, 3, "5"},  // 5 4 3
      {0, 2, "4"}, {0, 3, "3"},               // 3 4 5
      {0, 0, ""},  {0, 1, ""},  {0, 2, "3"},  // 3 - 4
      {0, 3, "4"}, {0, 3, ""},  {0, 3, "3"},  // 3 - 4
  };
  for (std::size_t i = 0; i < std::size(steps); ++i) {
    const auto& step = steps[i];
    if (step.repeat > 0) {
      input->on_repeat(idle, step.repeat);
    } else {
      const auto address = static_cast<std::uint8_t>(step.heard);
      input->on_packet(idle, address == 0 ? "" : answer_of(address));
    }
    std::string seen;
    for (const auto& name : detected()) seen += name.substr(4);
    EXPECT_EQ(step.seen, seen) << i;
    input->tick(1001);
  }
  EXPECT_DEATH(input->on_repeat(idle, 0), "repeat_nr && \\(repeat_nr < 4\\)");
  EXPECT_DEATH(input->set_state(4), "state_ < 4");
}

TEST_F(RailComReaderInputTest, forgets_locomotives_that_end) {
  hear(3);
  hear(4);
  take();
  owner(3)->destroy();
  EXPECT_THAT(take(), ElementsAre("left lok 3", "occupied"));
  EXPECT_THAT(detected(), ElementsAre("lok 4"));
  input->tick(500);
  hear(5);
  take();
  input->tick(400);
  hear(4);
  hear(5);
  on_line = [this] {
    if (log.back() == "left lok 4") owner(5)->destroy();
  };
  input->tick(1001);
  EXPECT_THAT(take(), ElementsAre("left lok 4", "left lok 5", "free", "free"));
}

TEST_F(RailComReaderInputTest, may_be_ended_by_whom_it_tells_something) {
  for (const std::string line :
       {"occupied", "side 1", "arrived lok 3", "side 0", "left lok 3", "free"}) {
    input = reader->add(new Input);
    follow();
    bool ended = false;
    on_line = [&] {
      if (log.back() != line) return;
      ended = true;
      input->destroy();
    };
    const std::function<void()> steps[] = {[this] { input->set_state(2); }, [this] { hear(3); },
                                           [this] { hear(4); }, [this] { input->set_state(0); },
                                           [this] { input->tick(1001); }};
    for (const auto& step : steps) {
      if (!ended) step();
    }
    EXPECT_TRUE(ended) << line;
    EXPECT_EQ(line, take().back()) << "nothing is told after the end";
  }
}

}  // namespace
}  // namespace zemblar
