// How a locomotive follows itself from block to block, and is braked.

#include <gtest/gtest.h>

#include "tests/support/small_railway.h"
#include "track/crossing.h"
#include "track/point.h"

namespace zemblar::test {
namespace {

using Tracking = SmallRailway;

TEST_F(Tracking, moves_the_head_with_the_next_detector_and_the_tail_with_the_last) {
  const auto zones = row({"A", "B", "C"});
  auto* lok = new_lok_in(zones[0]);
  EXPECT_EQ(place(lok), "A.left..A.right");
  at(zones[1]).occupy();
  EXPECT_EQ(place(lok) + held(lok), "A.left..B.rightAB");
  at(zones[0]).occupy(false);
  EXPECT_EQ(place(lok) + held(lok), "B.left..B.rightB");
  at(zones[2]).occupy();  // the watch has moved on as well
  EXPECT_EQ(place(lok), "B.left..C.right");
  at(zones[2]).occupy(false);  // a head that goes away again falls back
  EXPECT_EQ(place(lok) + held(lok), "B.left..B.rightB");
  EXPECT_FALSE(lok->get_brake());
  at(zones[1]).occupy(false);
  EXPECT_EQ(place(lok) + held(lok), "nowhere");
  EXPECT_FALSE(lok->get_brake());
}

TEST_F(Tracking, brakes_before_a_block_that_another_one_holds) {
  const auto zones = row({"A", "B", "C", "D"});
  auto* lok = new_lok_in(zones[0]);
  auto* other = new_lok_in(zones[2], "other");
  at(zones[1]).occupy();
  // B is the last free block: the train that enters it has to stop in it.
  EXPECT_TRUE(lok->get_brake());
  EXPECT_EQ(place(lok), "A.left..B.right");
  at(zones[1]).occupy(false);  // a head that was not there: nothing to stop for
  EXPECT_EQ(place(lok), "A.left..A.right");
  EXPECT_FALSE(lok->get_brake());
  at(zones[1]).occupy();
  EXPECT_TRUE(lok->get_brake());
  at(zones[0]).occupy(false);
  EXPECT_TRUE(lok->get_brake());
  at(zones[3]).occupy();
  EXPECT_TRUE(lok->get_brake());
  at(zones[2]).occupy(false);
  EXPECT_FALSE(lok->get_brake());
  EXPECT_EQ(held(lok) + held(other), "BD");
}

TEST_F(Tracking, settles_an_open_orientation_by_the_neighbour_that_lights_up_first) {
  for (const bool forwards : {true, false}) {
    const auto zones = row({"A", "B", "C"});
    auto* lok = new_lok();
    at(zones[1]).see(lok, 0);
    EXPECT_EQ(place(lok), "B.right..B.left?");
    at(zones[forwards ? 0 : 2]).occupy();
    EXPECT_EQ(place(lok), forwards ? "B.right..A.left" : "B.left..C.right");
    EXPECT_EQ(held(lok), forwards ? "AB" : "BC");
    layout().new_document(false);
  }
}

TEST_F(Tracking, takes_the_orientation_from_railcom) {
  struct {
    unsigned orientation;
    bool invert;
    const char* place;
  } const cases[] = {
      {0, false, "A.right..A.left?"}, {0, true, "A.right..A.left?"}, {1, false, "A.right..A.left"},
      {1, true, "A.left..A.right"},   {2, false, "A.left..A.right"}, {2, true, "A.right..A.left"},
      {3, false, "nowhere"},
  };
  for (const auto& one : cases) {
    auto* a = zone("A");
    a->set_invert(one.invert);
    auto* lok = new_lok();
    at(a).see(lok, one.orientation);
    EXPECT_EQ(place(lok), one.place) << one.orientation << one.invert;
    layout().new_document(false);
  }
}

TEST_F(Tracking, learns_in_its_own_block_which_way_it_stands) {
  auto* a = zone("A");
  auto* lok = new_lok();
  at(a).see(lok, 0);
  at(a).see(lok, 0);
  EXPECT_EQ(place(lok), "A.right..A.left?");
  at(a).see(lok, 2);  // the decoder's leading end is at the right, and it drives forwards
  EXPECT_EQ(place(lok), "A.left..A.right");
  lok->set_direction(Direction::Reverse);
  EXPECT_EQ(place(lok), "A.right..A.left");
  at(a).see(lok, 2);  // agrees: driving backwards, the trailing end leads
  EXPECT_EQ(place(lok), "A.right..A.left");
  at(a).see(lok, 1);
  EXPECT_EQ(place(lok), "A.left..A.right");
}

TEST_F(Tracking, leaves_a_block_to_its_first_claimant) {
  const auto zones = row({"A", "B", "C"});
  auto* first = new_lok_in(zones[0], "first");
  auto* second = new_lok("second");
  at(zones[0]).see(second, 2);
  EXPECT_EQ(place(second), "nowhere");
  EXPECT_EQ(zones[0]->get_lok(), first);
  at(zones[2]).see(second, 0);
  at(zones[0]).see(second, 2);  // tells nothing of how it stands in C either
  EXPECT_EQ(place(second), "C.right..C.left?");
  EXPECT_EQ(second->travel_sign(&zones[2]->right, &zones[2]->left), 0);
  second->destroy();
  first->destroy();
  auto* third = new_lok("third");
  at(zones[0]).see(third, 2);
  EXPECT_EQ(place(third), "A.left..A.right");
}

TEST_F(Tracking, crosses_blocks_without_a_detector_in_one_step) {
  auto* a = zone("A");
  auto* b = zone("B", false);
  auto* crossing = layout().get_blocks().add(new Crossing);
  crossing->set_name("X");
  auto* c = zone("C");
  a->right.connect(&b->left);
  b->right.connect(&crossing->links.top_left);
  crossing->links.bottom_right.connect(&c->left);
  auto* lok = new_lok_in(a);
  at(c).occupy();
  // Nothing watches C yet: the block ahead is B. The next report from A finds it.
  EXPECT_EQ(place(lok), "A.left..A.right");
  lok->reconnect();
  b->signal_occupied().emit();
  EXPECT_EQ(place(lok) + held(lok), "A.left..C.rightABCX");
  at(a).occupy(false);
  // Until C, the rear detector now, has been left as well.
  EXPECT_EQ(place(lok) + held(lok), "B.left..C.rightBCX");
  at(c).occupy(false);
  EXPECT_EQ(place(lok) + held(lok), "nowhere");
}

TEST_F(Tracking, looks_again_when_a_point_ahead_is_set) {
  auto* a = zone("A");
  auto* gate = layout().get_blocks().add(new Gate);
  gate->set_name("G");
  auto* b = zone("B");
  a->right.connect(&gate->left);
  gate->right.connect(&b->left);
  auto* lok = new_lok_in(a);
  gate->set_open(false);
  EXPECT_FALSE(lok->get_brake());  // no detector: not occupied
  gate->signal_occupied().emit();
  EXPECT_EQ(place(lok), "A.left..A.right");  // set against the train: no way, and no brake
  EXPECT_FALSE(lok->get_brake());
  gate->set_input(&at(b));
  at(b).occupy();
  gate->set_open(true);
  EXPECT_TRUE(lok->get_brake());
  at(b).occupy(false);
  gate->set_open(true);
  EXPECT_FALSE(lok->get_brake());
  auto& route = gate->signal_route();
  gate->left.disconnect();
  route.emit();  // still watched: nothing ahead any more
  EXPECT_TRUE(lok->get_brake());
  lok->set_brake(false);
  route.emit();  // and no longer now
  EXPECT_FALSE(lok->get_brake());
}

TEST_F(Tracking, walks_to_where_railcom_sees_it_or_jumps_there) {
  struct {
    const char* what;
    bool ring;
    int seen_in;  // of A to E; it stands in C and drives to the right
    unsigned orientation;
    const char* place;
    const char* held;
  } const cases[] = {
      {"ahead", false, 4, 2, "C.left..E.right", "CDE"},
      {"next", false, 3, 2, "C.left..D.right", "CD"},
      {"behind", false, 0, 2, "A.left..C.right", "ABC"},
      // Against the train's order of ends, the other end walks, and finds no way: a jump.
      {"behind, the other way round", false, 1, 0, "B.right..B.left?", "C"},
      {"ahead in a ring", true, 3, 2, "C.left..D.right", "CD"},
      {"behind in a ring", true, 1, 2, "B.left..C.right", "BC"},
      // The far end walks, round the ring, and the ends are exchanged if that is certain.
      {"ahead in a ring, the other way round", true, 4, 1, "C.right..E.left", "ABCE"},
      {"ahead in a ring, perhaps the other way round", true, 4, 0, "E.left..C.right", "ABCE"},
      {"behind in a ring, the other way round", true, 1, 1, "B.right..C.left", "ABCDE"},
      {"behind in a ring, perhaps the other way round", true, 1, 0, "C.left..B.right", "ABCDE"},
  };
  for (const auto& one : cases) {
    const auto names = std::vector{"A", "B", "C", "D", "E"};
    const auto zones = one.ring ? ring(names) : row(names);
    auto* lok = new_lok_in(zones[2]);
    at(zones[static_cast<unsigned>(one.seen_in)]).see(lok, one.orientation);
    EXPECT_EQ(place(lok), one.place) << one.what;
    EXPECT_EQ(held(lok), one.held) << one.what;
    layout().new_document(false);
  }
}

TEST_F(Tracking, survives_whatever_a_handler_of_its_own_doing_does) {
  using Act = void (*)(const std::vector<Zone*>& zones, Lok* lok);
  const Act acts[] = {
      [](auto&, auto* lok) { lok->destroy(); },
      [](auto& zones, auto*) { zones[1]->destroy(); },
      [](auto& zones, auto*) { zones[0]->destroy(); },
      [](auto&, auto* lok) { lok->set_direction(opposite(lok->get_direction())); },
      [](auto& zones, auto*) { zones[1]->replace_lok(nullptr); },
      [](auto& zones, auto*) { at(zones[0]).occupy(false); },
      [](auto& zones, auto* lok) { at(zones[1]).see(lok, 1); },
      [](auto& zones, auto*) { zones[1]->set_input(nullptr); },
      [](auto&, auto*) { layout().new_document(false); },
  };
  for (const bool on_brake : {false, true}) {
    for (std::size_t i = 0; i < std::size(acts); ++i) {
      const auto zones = row({"A", "B", "C"});
      auto* lok = new_lok_in(zones[0]);
      new_lok_in(zones[2], "other");
      bool done = false;
      const auto act = [&] {
        if (!std::exchange(done, true)) acts[i](zones, lok);
      };
      if (on_brake) {
        lok->signal_brake_changed().connect(act);
      } else {
        zones[1]->signal_lok_changed().connect(act);
      }
      at(zones[1]).occupy();
      EXPECT_TRUE(done) << i;
      for (auto* child : layout().get_loks()) {
        const auto& one = dynamic_cast<Lok&>(*child);
        EXPECT_EQ(one.front == nullptr, one.back == nullptr) << i;
      }
      layout().new_document(false);
    }
  }
}

// The tail's last link of before is none of the circle's.
TEST_F(Tracking, loses_its_place_when_a_handler_closes_a_circle_under_its_tail) {
  auto* a = zone("A");
  auto* u = zone("U", false);
  auto* v = zone("V", false);
  const auto zones = row({"B", "C"});
  auto* in = layout().get_points().add(new Point);
  auto* out = layout().get_points().add(new Point);
  const auto way = [](Point* point, unsigned i) { return point->state_link(point->states()[i]); };
  a->right.connect(&u->left);
  u->right.connect(way(in, 0));
  in->common.connect(&v->left);
  v->right.connect(&out->common);
  way(out, 0)->connect(&zones[0]->left);
  way(out, 1)->connect(way(in, 1));
  auto* lok = new_lok_in(a);
  at(zones[0]).occupy();
  u->signal_occupied().emit();
  at(a).occupy(false);
  at(zones[1]).occupy();
  ASSERT_EQ(place(lok), "U.left..C.right");
  v->signal_lok_changed().connect([=] {
    for (auto* point : {in, out}) point->set_state(point->states()[1]);
  });
  at(zones[0]).occupy(false);
  EXPECT_EQ(place(lok), "nowhere");
}

TEST_F(Tracking, handles_what_its_handlers_trigger_after_it_has_finished) {
  const auto zones = row({"A", "B", "C"});
  auto* lok = new_lok_in(zones[0]);
  // In the middle of the move, while the tail's watch has not been renewed.
  const ScopedConnection turning =
      zones[1]->signal_lok_changed().connect([&] { lok->set_direction(Direction::Reverse); });
  at(zones[1]).occupy();
  EXPECT_EQ(place(lok), "B.right..A.left");
  EXPECT_EQ(held(lok), "AB");
}

using TrackingDeathTest = Tracking;

TEST_F(TrackingDeathTest, asserts_that_railcom_sees_one_block) {
  const auto zones = row({"A", "B"});
  auto* lok = new_lok();
  EXPECT_DEATH(lok->detected(&zones[0]->left, &zones[1]->right, true),
               "front_->get_block\\(\\) == back_->get_block\\(\\)");
}

}  // namespace
}  // namespace zemblar::test
