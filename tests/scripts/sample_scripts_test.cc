#include <gtest/gtest.h>

#include "simulator/soak/soak_laps.h"
#include "source_dir.h"
#include "tests/support/layout_fixture.h"

namespace zemblar {
namespace {

using SampleLaps = test::LayoutTest;

// What a run of laps finds has to be found when it is there. Its trains go round by the layout's
// scripts alone.
TEST_F(SampleLaps, end_in_a_collision_when_the_railcar_does_not_wait_for_the_line) {
  const simulator::LapsOptions hour{.folder = folder.path(), .hours = 0.2, .seed = 2, .order = 3};
  const auto text = test::bytes_of(ZEMBLAR_SOURCE_DIR "/data/layouts/sample.zblt");
  folder.write("sample.zblt", text);
  const auto good = run_laps(hour);
  EXPECT_EQ("", good.trouble);
  EXPECT_EQ(good.laps.size(), 3u);
  folder.write("sample.zblt", text.substr(0, text.find("  - !script\n    name: Shuttle Waits")));
  const auto bad = run_laps(hour);
  EXPECT_NE(bad.trouble.find(" has run into "), std::string::npos) << bad.trouble;
}

// With a third train and a person who stops trains, who would meet the railcar by times alone.
TEST_F(SampleLaps, go_on_with_the_scripts_of_the_templates) {
  folder.write("sample.zblt", test::bytes_of(ZEMBLAR_SOURCE_DIR "/data/layouts/sample.zblt"));
  const auto laps = simulator::run_laps({.folder = folder.path(),
                                         .evening = "sample, scripts by templates",
                                         .hours = 0.15,
                                         .order = 1});
  EXPECT_EQ("", laps.trouble);
  EXPECT_EQ(laps.laps.size(), 4u);
}

}  // namespace
}  // namespace zemblar
