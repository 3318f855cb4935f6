#include <glibmm/fileutils.h>
#include <gtest/gtest.h>

#include <sstream>

#include "core/layout.h"
#include "devices/default_device.h"
#include "simulator/soak/bus_latency.h"
#include "simulator/soak/fault_matrix.h"
#include "simulator/soak/soak_bus.h"
#include "simulator/soak/soak_causes.h"
#include "simulator/soak/soak_following.h"
#include "simulator/soak/soak_links.h"
#include "simulator/soak/soak_scene.h"
#include "source_dir.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

// What a soak run finds has to be found when it is there.
TEST(Soak, finds_trains_that_meet_where_blocks_are_too_short_to_stop_in) {
  const auto good = run_following({.hours = 0.5, .seed = 3});
  EXPECT_TRUE(good.good) << good.report;
  const auto bad = run_following({.hours = 5,
                                  .seed = 3,
                                  .trains = 3,
                                  .blocks = 30,
                                  .shortest_block = 150,
                                  .longest_block = 250});
  EXPECT_FALSE(bad.good) << bad.report;
  EXPECT_NE(bad.report.find("has entered"), std::string::npos) << bad.report;
}

TEST(Soak, brings_a_bus_back_into_service_after_each_fault_and_tells_when_that_takes_too_long) {
  const auto good = run_bus_faults({.hours = 0.2, .seed = 2, .readers = 2});
  EXPECT_EQ("", good.trouble);
  EXPECT_GT(good.faults.size(), 5u);
  const auto bad = run_bus_faults({.hours = 1, .seed = 2, .readers = 2, .allowed = 500ms});
  EXPECT_NE(bad.trouble.find("not all is in service again"), std::string::npos) << bad.trouble;
}

TEST(Soak, brings_stops_in_time_to_stations_that_fail) {
  const FaultMatrix matrix(1, 5);
  std::ostringstream table;
  matrix.print(table);
  EXPECT_TRUE(matrix.holds()) << table.str();
}

TEST(Soak, loses_no_wish_over_links_that_fail_and_tells_when_one_takes_too_long) {
  for (const unsigned seed : {1, 2}) {
    const auto good = run_link_faults({.hours = 0.05, .seed = seed});
    EXPECT_EQ("", good.trouble);
    EXPECT_GT(good.faults.size(), 5u);
  }
  const auto bad = run_link_faults({.hours = 0.5, .seed = 3, .allowed = 0ms});
  EXPECT_NE(bad.trouble.find(" is not "), std::string::npos) << bad.trouble;
}

TEST(Soak, brakes_over_the_bus_within_one_poll_of_all_readers) {
  for (const auto load : {Load::scanning, Load::other_locomotives, Load::every_packet}) {
    const auto measured = measure_bus_latency(3, load, 10, 5);
    EXPECT_TRUE(measured.good()) << measured.times.back().count() << " of "
                                 << measured.bound.count();
    EXPECT_GT(measured.times.front(), 20ms) << "not over the wire";
  }
}

class SoakInquest : public testing::Test {
 protected:
  SoakInquest() {
    scene.model.signal_event().connect([this](const TrackEvent& event) {
      if (event.kind == TrackEvent::Kind::collision)
        cause = cause_of_collision(scene.witness, event);
    });
    zones = {&scene.add_block<Zone>("A", 2000), &scene.add_block<Zone>("B", 2000),
             &scene.add_block<Zone>("C", 2000), &scene.add_block<Zone>("D", 2000),
             &scene.add_block<Zone>("E", 2000)};
    for (std::size_t i = 0; i < 4; ++i) zones[i]->right.connect(&zones[i + 1]->left);
  }
  void train(unsigned address, BlockLink& towards, TrainOptions options = {}) {
    options.address = {address, false};
    EXPECT_TRUE(scene.place(scene.add_train(options), towards));
  }
  Lok* driven_lok(unsigned address) {
    return Layout::get().get_default_device().find_lok(Address(address));
  }
  void pass(int seconds) { scene.pass(std::chrono::seconds(seconds)); }

  SoakScene scene{1};
  std::array<Zone*, 5> zones{};
  Cause cause = Cause::track_ends;
};

TEST_F(SoakInquest, does_not_explain_a_collision_that_block_control_has_to_prevent) {
  train(3, zones[0]->right);
  train(4, zones[3]->right);
  pass(2);
  driven_lok(3)->set_speed(126);
  pass(240);
  EXPECT_TRUE(driven_lok(3)->get_brake());
  EXPECT_EQ(cause_of_stall(scene.witness, *scene.find(driven_lok(3))), Cause::waits);
  scene.model.command(3, 126, true);  // as if the brake had never risen
  pass(20);
  EXPECT_EQ(cause, Cause::unexplained);
}

TEST_F(SoakInquest, finds_the_dark_carriages_of_a_long_train) {
  train(3, zones[0]->right);
  train(4, zones[4]->right, {.length = 3500, .last_vehicle_draws = false});
  pass(2);
  driven_lok(3)->set_speed(126);
  pass(40);
  EXPECT_EQ(cause, Cause::undetected);
}

TEST_F(SoakInquest, finds_two_trains_that_went_for_one_free_block) {
  train(3, zones[0]->right);
  train(4, zones[4]->left);
  pass(2);
  for (const unsigned address : {3, 4}) driven_lok(address)->set_speed(126);
  pass(40);
  EXPECT_EQ(cause, Cause::one_free_block);
}

TEST(SoakCauses, are_all_explained_to_the_operator) {
  const auto page = Glib::file_get_contents(ZEMBLAR_SOURCE_DIR "/docs/block-control.md");
  for (const auto title : cause_titles) {
    if (title == simulator::title(Cause::unexplained)) continue;
    EXPECT_NE(page.find("\n### " + std::string(title) + "\n"), std::string::npos) << title;
  }
}

}  // namespace
}  // namespace zemblar::simulator
