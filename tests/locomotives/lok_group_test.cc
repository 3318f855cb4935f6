#include "locomotives/lok_group.h"

#include <yaml-cpp/yaml.h>

#include <functional>

#include "core/string_pool.h"
#include "core/yaml_io.h"
#include "devices/ecos/device_ecos.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_holder.h"
#include "tests/support/layout_fixture.h"

namespace zemblar::test {
namespace {

class LokGroupTest : public LayoutTest {
 protected:
  std::string path() const { return folder.file("layout.zblt"); }
};

TEST_F(LokGroupTest, is_built_from_entries_told_apart_by_their_tags) {
  const LokGroup group(YAML::Load(
      "{name: All, objects: [!lok {name: A}, !lok-group {name: B, objects: [!lok {name: C}]}, "
      "!lok-group {name: D}]}"));
  EXPECT_EQ(group.get_name(), "All");
  ASSERT_EQ(group.child_count(), 3u);
  EXPECT_NE(dynamic_cast<Lok*>(group.child_at(0)), nullptr);
  EXPECT_NE(dynamic_cast<Lok*>(group.child_at(1)->child_at(0)), nullptr);
  EXPECT_TRUE(group.child_at(2)->empty());

  for (const auto* text :
       {"objects: [!lok {functions: [{name: A}]}, !view {}]", "objects: [{name: A}]"}) {
    EXPECT_THROW(LokGroup(YAML::Load(text)), YAML::InvalidScalar) << text;
    EXPECT_TRUE(function_names().get_all().empty()) << text;
  }
  EXPECT_FALSE(Layout::open_copy(
      "objects: [&a !lok-group {objects: [!lok {functions: [{name: A}]}, *a]}]", true, "copy"));
  EXPECT_TRUE(get_status().raw().ends_with("An entry contains itself.")) << get_status();
}

TEST_F(LokGroupTest, takes_locomotives_and_groups_but_not_one_that_it_stands_in) {
  auto* outer = layout().get_loks().add(new LokGroup);
  auto* inner = outer->add(new LokGroup);
  auto* lok = inner->add(new Lok);
  EXPECT_TRUE(outer->can_contain(lok));
  EXPECT_TRUE(outer->can_contain(inner));
  EXPECT_FALSE(inner->can_contain(outer));
  EXPECT_FALSE(inner->can_contain(inner));
  EXPECT_FALSE(inner->can_contain(&layout().get_loks()));
  EXPECT_TRUE(layout().get_loks().can_contain(inner));
  EXPECT_FALSE(layout().get_blocks().can_contain(lok));
}

TEST_F(LokGroupTest, ends_a_file_as_a_station_does_and_is_named_as_what_the_file_lost) {
  const struct {
    std::function<Object*()> add;
    std::string kept;
    std::string lost;
  } cases[] = {
      {[] { return layout().get_loks().add(new LokGroup); }, "name: Before", "name: After"},
      {[] { return layout().get_devices().add(new ECoS); }, "name: After", "ESU"},
  };
  for (const auto& one : cases) {
    layout().new_document(false);
    layout().get_loks().add(new Lok)->set_name("Before");
    auto* unkeepable = one.add();
    unkeepable->set_name("Odd one");
    layout().get_loks().add(new Lok)->set_name("After");
    layout().save_to("file://" + path(), true);
    const auto bytes = bytes_of(path());
    EXPECT_NE(bytes.find(one.kept), std::string::npos);
    EXPECT_EQ(bytes.find(one.lost), std::string::npos);
    EXPECT_TRUE(bytes.ends_with("      []\n  - !\n")) << bytes;
    EXPECT_NE(get_status().raw().find("“Odd one”"), std::string::npos) << get_status();
    unkeepable->destroy();
    layout().save();
    EXPECT_EQ(get_status(), "Saved layout.zblt");
    EXPECT_TRUE(Layout::open(path())) << get_status();
    folder.write("layout.zblt", bytes);
    EXPECT_FALSE(Layout::open(path()));
    EXPECT_TRUE(get_status().raw().ends_with("column 5: Unimplemented Load: !")) << get_status();
  }
}

TEST_F(LokGroupTest, counts_for_a_holder_at_any_depth_and_in_whichever_layout_is_current) {
  LokHolder holder;
  int none_told = 0;
  int lok_told = 0;
  holder.connect_property_changed("no-loks", [&] { ++none_told; });
  holder.connect_property_changed("lok", [&] { ++lok_told; });
  EXPECT_TRUE(holder.get_no_loks());

  auto* outer = layout().get_loks().add(new LokGroup);
  auto* branch = new LokGroup;
  auto* lok = branch->add(new Lok);
  EXPECT_TRUE(holder.get_no_loks());
  outer->add(branch);
  outer->add(new Lok);
  EXPECT_FALSE(holder.get_no_loks());
  EXPECT_EQ(none_told, 1);
  (new Lok)->destroy();  // never a part of the layout
  EXPECT_EQ(lok_count(), 2u);

  holder.property_lok().set_value(lok);
  holder.set_lok(lok);
  branch->destroy();
  EXPECT_EQ(holder.get_lok(), nullptr);
  EXPECT_EQ(lok_told, 2);
  EXPECT_EQ(none_told, 1);

  folder.write("layout.zblt", "objects: [!nothing {}]\n");
  EXPECT_FALSE(Layout::open(path()));
  EXPECT_EQ(lok_count(), 1u);
  folder.write("layout.zblt", "objects:\n");
  ASSERT_TRUE(Layout::open(path()));
  EXPECT_TRUE(holder.get_no_loks());
  EXPECT_EQ(none_told, 2);
  folder.write("layout.zblt", "objects: [!lok {}, !lok {}]\n");
  bool none_in_between = true;
  // Whoever hears first of the end of the former layout asks.
  layout().signal_deleted().connect([&] { none_in_between = lok_count() == 0; });
  ASSERT_TRUE(Layout::open(path()));
  EXPECT_FALSE(none_in_between);
  EXPECT_EQ(lok_count(), 2u);
  EXPECT_EQ(none_told, 3);
  layout().get_loks().child_at(0)->destroy();
  layout().new_document(false);
  EXPECT_EQ(none_told, 4);
}

}  // namespace
}  // namespace zemblar::test
