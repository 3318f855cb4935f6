// Links between blocks, and the way from one to another.

#include <gtest/gtest.h>

#include "tests/support/small_railway.h"
#include "track/block_holder.h"
#include "track/block_link.h"
#include "track/crossing.h"

namespace zemblar::test {
namespace {

class Route : public SmallRailway {
 protected:
  /// The distance, or that there is none.
  static std::string distance(const BlockLink& from, const BlockLink& to) try {
    return std::to_string(from.distance_to(&to));
  } catch (const std::exception& error) {
    return error.what();
  }
  /// Which links have told of a change since the last call.
  std::string told() { return std::exchange(told_, {}); }
  void listen(BlockLink& link, const char* name) {
    link.signal_changed().connect([this, name] { told_ += name; });
  }
  std::string told_;
};

TEST_F(Route, counts_the_blocks_entered_and_left) {
  const auto zones = row({"A", "B", "C"});
  auto& a = *zones[0];
  auto& b = *zones[1];
  auto& c = *zones[2];
  const auto none = "Route Not Found";
  struct {
    BlockLink* from;
    BlockLink* to;
    const char* distance;
  } const cases[] = {
      {&a.right, &a.right, "0"}, {&a.right, &b.left, "0"},  {&a.right, &b.right, "1"},
      {&a.right, &c.left, "1"},  {&a.right, &c.right, "2"}, {&c.left, &a.left, "2"},
      {&a.right, &a.left, none}, {&a.left, &b.left, none},  {&a.left, &a.left, "0"},
      {&c.right, &a.left, none},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(distance(*one.from, *one.to), one.distance)
        << one.from->get_block()->get_name() << " to " << one.to->get_block()->get_name();
  }
  c.right.connect(&a.left);  // a ring now
  EXPECT_EQ(distance(a.right, a.left), "2");
  EXPECT_EQ(distance(a.right, *zone("apart")->get_link("left")), none);
  EXPECT_FALSE(a.right.find_distance_to(nullptr));
}

TEST_F(Route, goes_through_a_gate_as_it_stands) {
  const auto zones = row({"A", "B"});
  auto* gate = layout().get_blocks().add(new Gate);
  zones[0]->right.connect(&gate->left);
  gate->right.connect(&zones[1]->left);
  EXPECT_EQ(distance(zones[0]->right, zones[1]->right), "2");
  gate->set_open(false);
  EXPECT_EQ(distance(zones[0]->right, zones[1]->right), "Route Not Found");
  EXPECT_EQ(distance(zones[0]->right, gate->left), "0");
}

TEST_F(Route, ends_in_a_graph_whose_joins_contradict_each_other) {
  const auto zones = row({"A", "B", "C"});
  // Now A leads into the ring of B and C, and nothing leads back to it.
  zones[2]->right.connect(&zones[1]->left);
  EXPECT_EQ(zones[0]->right.get_partner(), &zones[1]->left);
  EXPECT_EQ(distance(zones[0]->right, zones[0]->left), "Route Not Found");
  zones[1]->destroy();
  EXPECT_FALSE(zones[0]->right.is_connected());
  EXPECT_FALSE(zones[2]->right.is_connected());
}

TEST_F(Route, tells_of_every_link_that_gets_another_partner) {
  auto* a = zone("A");
  auto* b = zone("B");
  auto* c = zone("C");
  listen(a->right, "a");
  listen(b->left, "b");
  listen(c->left, "c");
  a->right.connect(&b->left);
  EXPECT_EQ(told(), "ab");
  a->right.connect(&b->left);
  a->right.connect(&a->right);
  a->right.connect(nullptr);
  EXPECT_EQ(told(), "");
  a->right.connect(&c->left);
  EXPECT_EQ(told(), "bac");
  EXPECT_FALSE(b->left.is_connected());
  {
    BlockLink copy(a->right);
    EXPECT_EQ(copy.get_partner(), &c->left);
  }
  EXPECT_EQ(c->left.get_partner(), &a->right);
  EXPECT_EQ(told(), "");
  c->left.disconnect();
  EXPECT_EQ(told(), "ca");
  b->left.connect(&a->right);
  EXPECT_EQ(told(), "ba");
  b->destroy();
  EXPECT_EQ(told(), "ba");
  EXPECT_FALSE(a->right.is_connected());
}

TEST_F(Route, leads_diagonally_over_a_crossing) {
  Crossing crossing;
  const std::pair<const char*, const char*> ways[] = {{"top-left", "bottom-right"},
                                                      {"top-right", "bottom-left"},
                                                      {"bottom-left", "top-right"},
                                                      {"bottom-right", "top-left"}};
  for (const auto& [in, out] : ways) {
    auto* far = crossing.next_link(crossing.get_link(in));
    EXPECT_EQ(crossing.get_link_name(far), out);
  }
  auto* stranger = zone("A");
  EXPECT_EQ(crossing.next_link(&stranger->left), nullptr);
  EXPECT_EQ(stranger->next_link(&crossing.links.top_left), nullptr);
  EXPECT_EQ(crossing.get_link("middle"), nullptr);
  EXPECT_EQ(crossing.get_link_name(&stranger->left), "");
}

TEST_F(Route, knows_who_holds_a_block_and_what_its_detector_sees) {
  auto* a = zone("A", false);
  auto* first = new_lok("first");
  auto* second = new_lok("second");
  a->set_lok(first);
  a->set_lok(second);
  EXPECT_EQ(a->get_lok(), first);
  a->clear_lok(second);
  EXPECT_EQ(a->get_lok(), first);
  a->replace_lok(second);
  EXPECT_EQ(held(first) + held(second), "A");
  second->destroy();
  EXPECT_EQ(a->get_lok(), nullptr);

  auto* detector = layout().get_devices().add(new Detector);
  detector->see(first, 1);
  std::string events;
  a->signal_occupied().connect([&] { events += a->occupied() ? "occupied " : "free "; });
  a->signal_detected().connect([&](Lok* lok) { events += lok->get_name() + " "; });
  a->signal_lost().connect([&](Lok* lok) { events += "-" + lok->get_name() + " "; });
  a->set_input(detector);
  EXPECT_EQ(events, "occupied first ");
  EXPECT_EQ(place(first), "A.right..A.left");
  detector->lose(first);
  detector->occupy(false);
  EXPECT_EQ(events, "occupied first -first free ");
  a->set_input(nullptr);
  detector->occupy();
  a->set_input(detector);
  EXPECT_EQ(events, "occupied first -first free occupied ");
  detector->destroy();
  EXPECT_EQ(a->get_input(), nullptr);
  EXPECT_FALSE(a->occupied());
}

TEST_F(Route, catches_up_with_what_a_detector_still_sees) {
  for (const bool detach : {false, true}) {
    auto* a = zone("A", false);
    auto* first = new_lok("first");
    auto* second = new_lok("second");
    auto* detector = layout().get_devices().add(new Detector);
    detector->see(first);
    detector->see(second);
    std::string seen;
    a->signal_detected().connect([&](Lok* lok) {
      seen += lok->get_name();
      detach ? a->set_input(nullptr) : detector->lose(second);
    });
    a->set_input(detector);
    EXPECT_EQ(seen, "first");
    layout().new_document(false);
  }
}

TEST_F(Route, holds_a_block_until_it_ends) {
  BlockHolder holder;
  int none_told = 0;
  holder.connect_property_changed("no-blocks", [&] { ++none_told; });
  EXPECT_TRUE(holder.get_no_blocks());
  auto* a = zone("A", false);
  zone("B", false);
  EXPECT_FALSE(holder.get_no_blocks());
  holder.property_block().set_value(a);
  a->destroy();
  EXPECT_EQ(holder.get_block(), nullptr);
  EXPECT_EQ(none_told, 1);
}

}  // namespace
}  // namespace zemblar::test
