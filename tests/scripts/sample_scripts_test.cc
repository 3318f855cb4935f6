// What the scripts of the sample layout make trains do, in virtual time.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "core/status.h"
#include "locomotives/lok.h"
#include "runtime/timer.h"
#include "scripts/script.h"
#include "simulator/soak/soak_laps.h"
#include "simulator/trains/track_model.h"
#include "simulator/trains/track_reader.h"
#include "simulator/trains/track_station.h"
#include "source_dir.h"
#include "tests/support/layout_fixture.h"
#include "track/block.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;
using simulator::TrackEvent;

class SampleScripts : public test::LayoutTest {
 protected:
  SampleScripts() {
    EXPECT_TRUE(
        Layout::open(Glib::build_filename(ZEMBLAR_SOURCE_DIR "/data/layouts", "sample.zblt")));
    simulator::TrackStation::in_service(model);
    auto* reader = layout().get_devices().add(new simulator::TrackReader);
    std::map<const Device*, simulator::TrackInput*> inputs;
    for (const auto section : {Section::blocks, Section::points}) {
      for (auto* child : layout().get_toplevel(section)) {
        auto* block = dynamic_cast<Block*>(child);
        if (!block || !block->get_input()) continue;
        auto& input = inputs[block->get_input()];
        if (!input) input = reader->add_input();
        block->set_input(input);
      }
    }
    model.signal_event().connect([this](const TrackEvent& event) {
      if (event.kind == TrackEvent::Kind::entered) way += event.block->get_name() + ", ";
      if (event.kind == TrackEvent::Kind::ran_off || event.kind == TrackEvent::Kind::collision) {
        ++accidents;
      }
    });
  }
  ~SampleScripts() override {
    for (const auto& train : model.trains()) model.lift(*train);
    layout().new_document(false);
    clock.advance(1s);
  }

  Lok* put(const char* name, const char* block, double length) {
    auto* lok = dynamic_cast<Lok*>(layout().get_loks().find_child(name));
    const auto address = lok->get_decoders().front()->get_address();
    auto& train = model.add_train(
        {.name = name, .address = {address.get_addr(), address.is_long()}, .length = length});
    auto* zone = dynamic_cast<Block*>(layout().get_blocks().find_child(block));
    EXPECT_TRUE(model.place(train, *zone->get_link("right"))) << name;
    clock.advance(2s);
    return lok;
  }
  VirtualClock clock;
  simulator::TrackModel model;
  std::string way;
  unsigned accidents = 0;
};

TEST_F(SampleScripts, drive_a_shuttle_on_the_branch) {
  put("Railcar 5", "Branch North", 280);
  clock.advance(60s);
  EXPECT_EQ(way, "") << "scripts of a file sleep";
  start_scripts();
  EXPECT_EQ(sleeping_scripts(), 0u);
  EXPECT_EQ(get_status(), "") << "nobody is told of sleepers any more";
  clock.advance(120s);
  const std::string south = "North Approach, Branch Crossing, South Approach, Branch South, ";
  const std::string north = "South Approach, Branch Crossing, North Approach, Branch North, ";
  EXPECT_EQ(way.substr(0, 2 * (south + north).size()), south + north + south + north) << way;
  EXPECT_EQ(accidents, 0u);
}

TEST_F(SampleScripts, slow_a_train_in_the_curve_and_stop_it_in_the_station) {
  auto* express = put("Express 103", "North Line West", 500);
  start_scripts();
  express->set_speed(100);
  constexpr unsigned slow = 50;  // 40 %
  auto stopped = 0ms;
  auto slowed = 0ms;
  for (auto passed = 0s; passed < 40s && way.find("East Curve") == std::string::npos;
       passed += 1s) {
    for (int tenth = 0; tenth < 10; ++tenth) {
      clock.advance(100ms);
      stopped += express->get_speed_overlay() == 0 ? 100ms : 0ms;
      slowed += express->get_speed_overlay() == slow ? 100ms : 0ms;
    }
  }
  EXPECT_EQ(way, "West Curve, West Point, Station 1, East Point, East Curve, ");
  EXPECT_NEAR(std::chrono::duration<double>(stopped).count(), 7, 0.3);
  EXPECT_GT(slowed, 2s);
  clock.advance(20s);
  EXPECT_EQ(express->get_speed(), 100u);
  EXPECT_EQ(express->get_speed_overlay(), 100u) << "as before, once it has left";
  EXPECT_TRUE(layout().script_overlays.empty());
}

using SampleLaps = test::LayoutTest;

// What a run of laps finds has to be found when it is there.
TEST_F(SampleLaps, end_in_a_collision_when_the_railcar_does_not_wait_for_the_line) {
  const simulator::LapsOptions hour{.folder = folder.path(), .hours = 0.2, .seed = 2, .order = 3};
  const auto text =
      test::bytes_of(Glib::build_filename(ZEMBLAR_SOURCE_DIR "/data/layouts", "sample.zblt"));
  folder.write("sample.zblt", text);
  const auto good = run_laps(hour);
  EXPECT_EQ("", good.trouble);
  EXPECT_EQ(good.laps.size(), 3u);
  folder.write("sample.zblt", text.substr(0, text.find("  - !script\n    name: Shuttle Waits")));
  const auto bad = run_laps(hour);
  EXPECT_NE(bad.trouble.find(" has run into "), std::string::npos) << bad.trouble;
}

}  // namespace
}  // namespace zemblar
