#include <gtest/gtest.h>

#include <map>

#include "core/document_text.h"
#include "diagram/view.h"
#include "diagram/view_label.h"
#include "diagram/view_link_node.h"
#include "source_dir.h"
#include "tests/support/layout_fixture.h"
#include "tests/track/link_names.h"

namespace zemblar {
namespace {

/// The pictures of each block, signals among them. A block may be drawn in several views.
std::multimap<const Object*, ViewObj*> pictures() {
  std::multimap<const Object*, ViewObj*> found;
  for (auto* view : Layout::get().get_views()) {
    for (const auto& picture : dynamic_cast<View&>(*view).get_objects()) {
      auto* shown = picture.operator->();
      if (!dynamic_cast<ViewLabel*>(shown)) found.emplace(shown->get_object(), shown);
    }
  }
  return found;
}

/// What the pictures of a block join to its end; null for nothing.
const BlockLink* drawn_partner(const auto& pictures, const std::string& name) {
  const BlockLink* partner = nullptr;
  for (auto [picture, end] = pictures; picture != end; ++picture) {
    const auto* node = picture->second->get_link_node(name);
    EXPECT_TRUE(node) << name;
    if (node && node->get_link()) partner = node->get_link()->get_block_link();
  }
  return partner;
}

/// Nothing but that scripts sleep.
std::string status_of(const std::string& name) {
  return (name == "sample.zblt" ? "6" : "24") +
         std::string(" scripts sleep; “Start Scripts” in the Scripts panel wakes them.");
}

using SampleLayouts = test::LayoutTest;

TEST_F(SampleLayouts, come_back_byte_for_byte_and_draw_all_of_their_track) {
  for (const auto* name : {"sample.zblt", "club.zblt"}) {
    const auto path = Glib::build_filename(ZEMBLAR_SOURCE_DIR "/data/layouts", name);
    ASSERT_TRUE(Layout::open(path)) << get_status();
    EXPECT_EQ(get_status().raw(), status_of(name));
    EXPECT_EQ(Layout::get().serialize(), test::bytes_of(path));
    DocumentText text;
    for (auto before = text.size(); text.write_part(); before = text.size()) {
      EXPECT_LT(text.size() - before, 16384U) << "the program pauses while it writes a part";
    }
    ASSERT_TRUE(Layout::open_copy(std::string(text.text()), true, "copy")) << get_status();
    EXPECT_EQ(DocumentText::whole(), text.text());
    EXPECT_EQ(layout().get_path(), path);
    EXPECT_EQ(Layout::get().serialize(), test::bytes_of(path)) << "from a copy";
    const auto drawn = pictures();
    for (const auto section : {Section::blocks, Section::points}) {
      for (auto* child : layout().get_toplevel(section)) {
        auto& block = dynamic_cast<Block&>(*child);
        EXPECT_TRUE(drawn.contains(&block)) << block.get_name();
        for (const auto& end : test::link_names(block)) {
          const auto* link = block.get_link(end);
          if (!link) continue;
          EXPECT_EQ(drawn_partner(drawn.equal_range(&block), end), link->get_partner())
              << block.get_name() << ", " << end;
        }
      }
    }
  }
}

TEST_F(SampleLayouts, come_back_from_a_copy_that_is_written_in_small_parts) {
  constexpr std::size_t largest = 16384;
  for (const auto* name : {"sample.zblt", "club.zblt"}) {
    const auto path = Glib::build_filename(ZEMBLAR_SOURCE_DIR "/data/layouts", name);
    ASSERT_TRUE(Layout::open(path)) << get_status();
    DocumentText text;
    for (auto before = text.size(); text.write_part(); before = text.size()) {
      EXPECT_LT(text.size() - before, largest);
    }
    ASSERT_TRUE(Layout::open_copy(std::string(text.text()), true, "copy")) << get_status();
    EXPECT_EQ(get_status().raw(), status_of(name));
    EXPECT_EQ(DocumentText::whole(), text.text());
    EXPECT_EQ(layout().get_path(), path);
    EXPECT_EQ(layout().serialize(), test::bytes_of(path));
  }
}

TEST_F(SampleLayouts, let_a_train_go_round_as_the_points_lie) {
  const struct {
    const char* layout;
    const char* block;
    unsigned distance;
  } cases[] = {{"sample.zblt", "Station 1", 10}, {"club.zblt", "Central 3 East", 19}};
  for (const auto& [name, start, distance] : cases) {
    ASSERT_TRUE(Layout::open(Glib::build_filename(ZEMBLAR_SOURCE_DIR "/data/layouts", name)))
        << get_status();
    auto* block = dynamic_cast<Block*>(layout().get_blocks().find_child(start));
    ASSERT_TRUE(block) << start;
    EXPECT_EQ(block->get_link("right")->find_distance_to(block->get_link("left")), distance);
  }
}

}  // namespace
}  // namespace zemblar
