// Blocks in a layout file.

#include <gtest/gtest.h>

#include "tests/support/small_railway.h"
#include "track/crossing.h"

namespace zemblar::test {
namespace {

class TrackFile : public SmallRailway {
 protected:
  static bool open(const std::string& objects) {
    return Layout::open_bytes("railway.zblt", "%YAML 1.2\ntitle: Railway\nobjects:\n" + objects);
  }
  static Block& block(const char* name) {
    return dynamic_cast<Block&>(*layout().get_blocks().find_child(name));
  }
  static std::string partner(const char* name, const char* link) {
    const auto* other = block(name).get_link(link)->get_partner();
    return other ? other->get_block()->get_name() + "." + other->get_block()->get_link_name(other)
                 : "";
  }
};

TEST_F(TrackFile, comes_back_with_its_joins_byte_for_byte) {
  const auto zones = ring({"A", "B", "C"});
  for (auto* one : zones) one->get_input()->destroy();
  zones[1]->set_invert(true);
  auto* crossing = layout().get_blocks().add(new Crossing);
  zones[2]->right.disconnect();
  zones[2]->right.connect(&crossing->links.bottom_left);
  crossing->links.top_right.connect(&crossing->links.top_left);
  const auto text = layout().serialize();
  EXPECT_NE(text.find("- !zone\n    name: B\n    id: "), std::string::npos) << text;
  ASSERT_TRUE(Layout::open_bytes("railway.zblt", text)) << get_status();
  EXPECT_EQ(layout().serialize(), text);
  EXPECT_EQ(partner("A", "right"), "B.left");
  EXPECT_EQ(partner("C", "right"), "Crossing 1.bottom-left");
  EXPECT_EQ(partner("Crossing 1", "top-left"), "Crossing 1.top-right");
  EXPECT_TRUE(block("B").get_invert());
}

TEST_F(TrackFile, leaves_an_end_open_that_cannot_be_joined) {
  struct {
    const char* what;
    const char* objects;
    const char* a_right;
  } const cases[] = {
      {"no such block", "- !zone {name: A, id: 0, right: [7, left]}\n", ""},
      {"no such link", "- !zone {name: A, id: 0, right: [1, middle]}\n- !zone {name: B, id: 1}\n",
       ""},
      {"no block at all", "- !zone {name: A, id: 0, right: [1, left]}\n- !lok {name: B, id: 1}\n",
       ""},
      {"itself", "- !zone {name: A, id: 0, right: [0, right]}\n", ""},
      {"said by one side", "- !zone {name: A, id: 0}\n- !zone {name: B, id: 1, left: [0, right]}\n",
       "B.left"},
      {"taken by the first",
       "- !zone {name: A, id: 0, right: [1, left]}\n- !zone {name: B, id: 1, left: [2, right]}\n"
       "- !zone {name: C, id: 2, right: [1, left]}\n",
       "B.left"},
      {"no detector", "- !zone {name: A, id: 0, input: 5, left: ~}\n", ""},
  };
  for (const auto& one : cases) {
    ASSERT_TRUE(open(one.objects)) << one.what << get_status();
    EXPECT_EQ(partner("A", "right"), one.a_right) << one.what;
    for (auto* child : layout().get_blocks()) {
      for (const auto* name : {"left", "right"}) {
        auto* link = dynamic_cast<Block&>(*child).get_link(name);
        auto* partner = link->get_partner();
        EXPECT_TRUE(!partner || partner->get_partner() == link) << one.what;
      }
    }
  }
}

TEST_F(TrackFile, knows_nothing_of_a_detector_that_is_not_in_the_document) {
  Detector simulated;
  zone("A", false)->set_input(&simulated);
  const auto text = layout().serialize();
  EXPECT_NE(text.find("input: ~"), std::string::npos) << text;
  layout().get_blocks().destroy_children();
}

TEST_F(TrackFile, refuses_what_is_no_block) {
  zone("kept");
  for (const auto* objects :
       {"- !zone {invert: perhaps}\n", "- !zone {left: 3}\n", "- !zone {left: [1]}\n",
        "- !zone {left: [1, left, 2]}\n", "- !zone {left: [x, left]}\n",
        "- !crossing {top-left: {a: b}}\n", "- !zone {input: -1}\n"}) {
    EXPECT_FALSE(open(objects)) << objects;
    EXPECT_NE(get_status(), "") << objects;
    EXPECT_NE(layout().get_blocks().find_child("kept"), nullptr) << objects;
  }
}

}  // namespace
}  // namespace zemblar::test
