#include "devices/railcom/dummy_railcom_reader.h"

#include <gmock/gmock.h>

#include <functional>
#include <utility>

#include "devices/default_device.h"
#include "locomotives/lok.h"
#include "runtime/timer.h"
#include "support/layout_fixture.h"

namespace zemblar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Log = std::vector<std::string>;

constexpr std::chrono::milliseconds second{1000};

/// Writes down what inputs tell, each line with the input's number.
class InputLog {
 public:
  void follow(unsigned number, Device& input) {
    const auto note = [this, number](const std::string& text) {
      lines_.push_back(std::to_string(number) + ' ' + text);
      if (on_line) on_line();
    };
    const auto note_lok = [note](const char* text) {
      return [note, text](Lok* lok) { note(text + lok->get_name().raw()); };
    };
    input.signal_changed().connect(
        [note, seen = &input] { note(seen->occupied() ? "occupied" : "free"); });
    input.signal_state_changed().connect([note] { note("state"); });
    input.signal_arrived().connect(note_lok("arrived "));
    input.signal_left().connect(note_lok("left "));
  }
  Log take() { return std::exchange(lines_, {}); }

  std::function<void()> on_line;

 private:
  Log lines_;
};

class DummyRailComReaderTest : public test::LayoutTest {
 protected:
  DummyRailComReaderTest() {
    lok->set_name("V60");
    lok->get_decoders().front()->set_address(Address(60));
    reader->set_address(Address(60));
    reader->signal_deleted().connect([this] { reader = nullptr; });
    for (unsigned i = 0; i < 8; ++i) log.follow(i, input(i));
  }
  ~DummyRailComReaderTest() override {
    if (reader) reader->destroy();
    clock.advance(second);  // its fiber sees that
  }

  DeviceDummyRailComReaderInput& input(unsigned n) {
    return dynamic_cast<DeviceDummyRailComReaderInput&>(*reader->child_at(n));
  }
  /// Bit i: input i is occupied.
  unsigned occupied() {
    unsigned found = 0;
    for (unsigned i = 0; i < 8; ++i) found |= static_cast<unsigned>(input(i).occupied()) << i;
    return found;
  }

  VirtualClock clock;
  InputLog log;
  Lok* lok = layout().get_loks().add(new Lok);
  DeviceDummyRailComReader* reader = new DeviceDummyRailComReader;
};

TEST_F(DummyRailComReaderTest, has_eight_inputs_that_can_be_asked_at_once) {
  ASSERT_EQ(reader->child_count(), 8U);
  EXPECT_EQ(reader->get_name(), "Dummy RailCom Reader 1");
  EXPECT_EQ(input(7).get_name(), "Input 8");
  EXPECT_TRUE(reader->active());
  EXPECT_EQ(reader->link_state().phase, LinkPhase::in_service);
  for (unsigned i = 0; i < 8; ++i) {
    EXPECT_TRUE(input(i).active());
    EXPECT_EQ(input(i).link_state().phase, LinkPhase::in_service);
    for (const char* feature : {"Occupancy", "RailCom"}) EXPECT_EQ(input(i).supports(feature), 2);
    for (const char* feature : {"DCC", "DCC/Power", ""}) EXPECT_EQ(input(i).supports(feature), 0);
  }
}

TEST_F(DummyRailComReaderTest, moves_its_pattern_on_by_one_input_each_second) {
  // The simulation has begun with nothing; bit 0 stands at input k after k seconds.
  reader->set_pattern(0b10000011);
  clock.advance(second - std::chrono::milliseconds(1));
  EXPECT_EQ(occupied(), 0U);
  clock.advance(std::chrono::milliseconds(1));
  const unsigned expected[] = {0b00000111, 0b00001110, 0b00011100, 0b00111000, 0b01110000,
                               0b11100000, 0b11000001, 0b10000011, 0b00000111};
  for (const auto inputs : expected) {
    EXPECT_EQ(occupied(), inputs);
    clock.advance(second);
  }
  reader->set_pattern(0);
  EXPECT_EQ(occupied(), 0b00001110U);
  clock.advance(second);
  EXPECT_EQ(occupied(), 0U);
}

TEST_F(DummyRailComReaderTest, occupies_before_it_releases_and_tells_who_is_there) {
  reader->set_pattern(0b11);
  reader->set_railcom(0b10);
  clock.advance(second);
  EXPECT_THAT(log.take(), ElementsAre("1 occupied", "2 left V60", "2 occupied", "2 arrived V60"));
  EXPECT_THAT(input(1).detected(), IsEmpty());
  EXPECT_THAT(input(2).detected(), ElementsAre(lok));
  clock.advance(second);
  EXPECT_THAT(log.take(), ElementsAre("2 state", "2 left V60", "3 left V60", "3 occupied",
                                      "3 arrived V60", "1 free"));
  EXPECT_THAT(input(2).detected(), IsEmpty());
  reader->set_pattern(0b10);
  clock.advance(second);
  EXPECT_THAT(log.take(),
              ElementsAre("4 left V60", "4 occupied", "4 arrived V60", "2 free", "3 free"));
  reader->set_pattern(0b100);
  clock.advance(second * 2);
  log.take();
  // Free, it still has what it reported.
  EXPECT_THAT(input(4).detected(), IsEmpty());
}

TEST_F(DummyRailComReaderTest, reports_nobody_whom_the_device_does_not_know) {
  auto* station = layout().get_devices().add(new DefaultDevice);
  reader->set_dcc_device(station);
  reader->set_pattern(1);
  reader->set_railcom(1);
  clock.advance(second);
  EXPECT_THAT(log.take(), ElementsAre("1 occupied"));
  // With the device gone the layout's own is asked.
  station->destroy();
  EXPECT_EQ(reader->get_dcc_device(), nullptr);
  clock.advance(second);
  EXPECT_THAT(log.take(), ElementsAre("2 left V60", "2 occupied", "2 arrived V60", "1 free"));
  lok->destroy();
  EXPECT_THAT(input(2).detected(), IsEmpty());
  EXPECT_TRUE(input(2).occupied());
  clock.advance(second);
  EXPECT_THAT(log.take(), ElementsAre("3 occupied", "2 free"));
}

TEST_F(DummyRailComReaderTest, an_input_tells_each_change_once) {
  auto& one = input(0);
  one.set_lok(lok);
  one.set_orientation(2);
  EXPECT_THAT(log.take(), IsEmpty());
  EXPECT_EQ(one.orientation(), 0U);
  one.set_occupied(true);
  EXPECT_EQ(one.orientation(), 2U);
  one.set_railcom(true);
  one.set_railcom(true);
  EXPECT_THAT(log.take(), ElementsAre("0 occupied", "0 state", "0 arrived V60"));
  one.set_orientation(1);
  one.set_orientation(1);
  EXPECT_THAT(log.take(), ElementsAre("0 state"));
  one.set_occupied(false);
  one.set_occupied(false);
  one.set_railcom(false);
  EXPECT_THAT(log.take(), ElementsAre("0 free"));
  EXPECT_EQ(one.orientation(), 0U);
}

TEST_F(DummyRailComReaderTest, whoever_listens_may_end_the_reader_or_the_locomotive) {
  for (const bool ends_reader : {true, false}) {
    for (std::size_t line = 1; line <= 10; ++line) {
      Lok* mine = layout().get_loks().add(new Lok);
      mine->get_decoders().front()->set_address(Address(70));
      InputLog heard;
      auto* other = new DeviceDummyRailComReader;
      for (unsigned i = 0; i < 8; ++i) heard.follow(i, *dynamic_cast<Device*>(other->child_at(i)));
      other->set_address(Address(70));
      other->set_pattern(0b11);
      other->set_railcom(0b10);
      std::size_t count = 0;
      heard.on_line = [&] {
        if (++count != line) return;
        std::exchange(mine, nullptr)->destroy();
        if (ends_reader) std::exchange(other, nullptr)->destroy();
      };
      clock.advance(second * 2);
      if (ends_reader) {
        EXPECT_EQ(count, line);
      }
      if (!other) continue;
      for (const auto* each : *other) {
        EXPECT_THAT(dynamic_cast<const Device*>(each)->detected(), IsEmpty()) << line;
      }
      other->destroy();
    }
  }
  // A pause that nobody waits for any more is over at once, and tells nothing.
  reader->set_pattern(255);
  reader->destroy();
  clock.advance(second * 2);
  EXPECT_THAT(log.take(), IsEmpty());
}

}  // namespace
}  // namespace zemblar
