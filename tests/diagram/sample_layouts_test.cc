#include <gtest/gtest.h>

#include <map>

#include "diagram/view.h"
#include "diagram/view_label.h"
#include "diagram/view_track.h"
#include "tests/support/layout_fixture.h"
#include "track/corners.h"
#include "track/point_base.h"

namespace zemblar {
namespace {

std::vector<std::string> link_names(const Block& block) {
  std::vector<std::string> names{"left", "right", "common"};
  names.insert(names.end(), Corners::names.begin(), Corners::names.end());
  if (const auto* point = dynamic_cast<const PointBase*>(&block)) {
    for (const auto* state : point->states()) names.push_back("state:" + state->get_name());
  }
  return names;
}

/// Every join of the railway is one of the picture's too.
void expect_joined_as_drawn(Block& block, ViewObj& picture) {
  for (const auto& name : link_names(block)) {
    const auto* link = block.get_link(name);
    if (!link) continue;
    const auto* node = picture.get_link_node(name);
    ASSERT_TRUE(node) << block.get_name() << ", " << name;
    const auto* partner = node->get_link() ? node->get_link()->get_block_link() : nullptr;
    EXPECT_EQ(link->get_partner(), partner) << block.get_name() << ", " << name;
  }
}

/// How often each block is drawn, signals among them.
std::map<const Object*, int> drawn_blocks() {
  std::map<const Object*, int> drawn;
  for (auto* view : Layout::get().get_views()) {
    for (const auto& picture : dynamic_cast<View&>(*view).get_objects()) {
      auto* block = dynamic_cast<Block*>(picture->get_object());
      auto* shown = picture.operator->();
      if (!block || dynamic_cast<ViewLabel*>(shown)) continue;
      ++drawn[block];
      if (dynamic_cast<ViewTrack*>(shown)) expect_joined_as_drawn(*block, *shown);
    }
  }
  return drawn;
}

using SampleLayouts = test::LayoutTest;

TEST_F(SampleLayouts, come_back_byte_for_byte_and_draw_all_of_their_track) {
  for (const auto* name : {"sample.zblt"}) {
    const auto path = Glib::build_filename(SAMPLE_LAYOUTS, name);
    ASSERT_TRUE(Layout::open(path)) << get_status();
    EXPECT_EQ(get_status(), "");
    EXPECT_EQ(Layout::get().serialize(), test::bytes_of(path));
    const auto drawn = drawn_blocks();
    for (const auto section : {Section::blocks, Section::points}) {
      for (auto* child : Layout::get().get_toplevel(section)) {
        const auto* block = dynamic_cast<Block*>(child);
        if (!block) continue;
        const auto found = drawn.find(block);
        EXPECT_EQ(found == drawn.end() ? 0 : found->second, 1) << block->get_name();
      }
    }
  }
}

TEST_F(SampleLayouts, let_a_train_go_round_as_the_points_lie) {
  const struct {
    const char* layout;
    const char* block;
    unsigned distance;
  } cases[] = {{"sample.zblt", "Station 1", 8}};
  for (const auto& [name, start, distance] : cases) {
    ASSERT_TRUE(Layout::open(Glib::build_filename(SAMPLE_LAYOUTS, name))) << get_status();
    auto* block = dynamic_cast<Block*>(layout().get_blocks().find_child(start));
    ASSERT_TRUE(block) << start;
    EXPECT_EQ(block->get_link("right")->find_distance_to(block->get_link("left")), distance);
  }
}

}  // namespace
}  // namespace zemblar
