#include "simulator/bus/simulated_bus.h"

#include "simulator/trains/track_model.h"
#include "tests/support/layout_fixture.h"
#include "track/zone.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

class SimulatedBusTest : public test::LayoutTest {
 protected:
  SimulatedBusTest() {
    here->right.connect(&there->left);
    bus.add_reader(7, 2);
    bus.wire(*here, 7, 1);
    bus.wire(*there, 7, 0);
    bus.serve(track);
  }
  ~SimulatedBusTest() override { layout().new_document(false); }

  std::string states() {
    std::string states;
    for (unsigned i = 0; i < bus.reader(7).input_count(); ++i) {
      states += std::to_string(bus.reader(7).state(i));
    }
    return states;
  }

  VirtualClock clock;
  Zone* here = layout().get_blocks().add(new Zone);
  Zone* there = layout().get_blocks().add(new Zone);
  SimulatedBus bus;
  TrackModel track;
};

TEST_F(SimulatedBusTest, has_its_readers_see_the_trains_on_the_blocks_that_are_wired_to_them) {
  auto& train = track.add_train({.name = "Train", .address = {3, false}});
  ASSERT_TRUE(track.place(train, here->right));
  EXPECT_EQ("00", states()) << "not at once";
  clock.advance(1ms);
  EXPECT_EQ("01", states());
  clock.advance(1s);
  EXPECT_EQ("03", states()) << "it leads to the right";
  track.command(3, 126, true);
  clock.advance(3s);
  EXPECT_EQ("33", states()) << "the locomotive is on the other one, and was here just now";
  clock.advance(10s);
  EXPECT_EQ("30", states());
}

TEST_F(SimulatedBusTest, may_change_under_a_train) {
  auto& train = track.add_train({.name = "Train", .address = {3, false}});
  ASSERT_TRUE(track.place(train, here->right));
  track.command(3, 126, true);
  clock.advance(1500ms);
  bus.add_reader(7, 1);
  clock.advance(10s);
  EXPECT_EQ("3", states()) << "the other input has gone with its wire's end";
  there->destroy();
  EXPECT_FALSE(train.on_track());
  clock.advance(10s);
  EXPECT_EQ("0", states());
}

}  // namespace
}  // namespace zemblar::simulator
