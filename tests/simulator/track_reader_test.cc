#include "simulator/trains/track_reader.h"

#include <gtest/gtest.h>

#include "locomotives/lok.h"
#include "simulator/trains/railcom_encoder.h"
#include "tests/support/layout_fixture.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

class TrackReaderTest : public test::LayoutTest {
 protected:
  TrackReaderTest() {
    input->signal_changed().connect([this] { told += input->occupied() ? "+" : "-"; });
    input->signal_arrived().connect([this](Lok* lok) { told += "a" + lok->get_name().raw(); });
    input->signal_left().connect([this](Lok* lok) { told += "l" + lok->get_name().raw(); });
  }

  // What is told at the end is told while there is still somebody to hear it.
  ~TrackReaderTest() override { layout().new_document(false); }

  static void new_lok(const char* name, unsigned address) {
    auto* lok = layout().get_loks().add(new Lok);
    lok->set_name(name);
    lok->get_decoders().front()->set_address(Address(address));
  }
  void answer(unsigned address) {
    const DccAddress dcc{address, address > 127};
    input->receive(speed_packet(dcc, 0, true), RailComEncoder(dcc).channel_2(0));
  }
  std::string take() { return std::exchange(told, ""); }

  VirtualClock clock;
  TrackReader* reader = layout().get_devices().add(new TrackReader);
  TrackInput* input = reader->add_input();
  std::string told;
};

TEST_F(TrackReaderTest, forgets_current_and_locomotives_by_the_clock) {
  new_lok("A", 3);
  new_lok("B", 1000);
  input->set_current(true, 2);
  EXPECT_EQ(input->orientation(), 2u);
  input->set_current(false, 2);
  EXPECT_EQ(input->orientation(), 0u);
  EXPECT_EQ(take(), "++");
  clock.advance(200ms);
  answer(3);
  EXPECT_EQ(take(), "+aA");
  clock.advance(50ms);
  EXPECT_EQ(take(), "");
  clock.advance(1ms);
  EXPECT_EQ(take(), "+") << "the current is over, A is still there";
  clock.advance(549ms);
  answer(1000);
  EXPECT_EQ(take(), "+aB");
  clock.advance(400ms);
  EXPECT_EQ(take(), "");
  clock.advance(1ms);
  EXPECT_EQ(take(), "lA+");
  clock.advance(600ms);
  EXPECT_EQ(take(), "lB-");
}

TEST_F(TrackReaderTest, leaves_no_trace_in_the_saved_document) {
  const auto with_reader = layout().serialize();
  reader->destroy();
  EXPECT_EQ(layout().serialize(), with_reader);
}

TEST_F(TrackReaderTest, may_end_in_what_it_tells) {
  new_lok("A", 3);
  auto* other = reader->add_input();
  input->signal_arrived().connect([this](Lok*) { input->destroy(); });
  answer(3);
  EXPECT_EQ(reader->child_count(), 1u);
  other->set_current(true);
  other->set_current(false);
  other->destroy();
  clock.advance(2s);
}

}  // namespace
}  // namespace zemblar::simulator
