// How a locomotive follows itself from block to block, and is braked.

#include <gtest/gtest.h>

#include "tests/support/small_railway.h"
#include "track/crossing.h"
#include "track/point.h"

namespace zemblar::test {
namespace {

class Tracking : public SmallRailway {
 protected:
  /// Drives a locomotive into the block beside it, head and tail.
  static void pass(const Block* from, const Block* to) {
    at(to).occupy();
    at(from).occupy(false);
  }
};

TEST_F(Tracking, moves_the_head_with_the_next_detector_and_the_tail_with_the_last) {
  const auto zones = row({"A", "B", "C"});
  auto* lok = new_lok_in(zones[0]);
  EXPECT_EQ(place(lok), "A.left..A.right");
  at(zones[1]).occupy();
  EXPECT_EQ(place(lok), "A.left..B.right");
  EXPECT_EQ(held(lok), "AB");
  at(zones[0]).occupy(false);
  EXPECT_EQ(place(lok), "B.left..B.right");
  EXPECT_EQ(held(lok), "B");
  at(zones[2]).occupy();  // the watch has moved on as well
  EXPECT_EQ(place(lok), "B.left..C.right");
  at(zones[2]).occupy(false);  // a head that goes away again falls back
  EXPECT_EQ(place(lok), "B.left..B.right");
  EXPECT_EQ(held(lok), "B");
  EXPECT_FALSE(lok->get_brake());
  at(zones[1]).occupy(false);
  EXPECT_EQ(place(lok), "nowhere");
  EXPECT_EQ(held(lok), "");
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

TEST_F(Tracking, follows_a_long_train_that_leaves_its_blocks_one_by_one) {
  const auto zones = ring({"A", "B", "C"});
  auto* lok = new_lok_in(zones[0]);
  at(zones[1]).occupy();
  at(zones[2]).occupy();
  EXPECT_EQ(place(lok), "A.left..C.right");
  at(zones[0]).occupy();  // it fills the ring: its head has come to its own tail
  EXPECT_EQ(place(lok), "A.left..C.right");
  at(zones[0]).occupy(false);
  EXPECT_EQ(place(lok), "B.left..C.right");
  at(zones[1]).occupy(false);
  EXPECT_EQ(place(lok), "C.left..C.right");
  EXPECT_EQ(held(lok), "C");
}

TEST_F(Tracking, is_lost_when_its_blocks_go_free_whoever_stands_beside_it) {
  for (const bool long_train : {false, true}) {
    const auto zones = row({"A", "B", "C", "D"});
    zones[3]->set_lok(new_lok("ahead"));
    at(zones[3]).occupy();
    if (long_train) zones[2]->set_input(&at(zones[1]));
    auto* lok = new_lok_in(zones[1]);
    EXPECT_EQ(place(lok), long_train ? "B.left..C.right" : "B.left..B.right");
    at(zones[0]).occupy();
    at(zones[1]).occupy(false);
    EXPECT_EQ(place(lok) + held(lok), "nowhere");
    layout().new_document(false);
  }
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

// The exchange leaves the watches as they are until something moves.
TEST_F(Tracking, keeps_its_watches_when_railcom_exchanges_its_ends) {
  const auto zones = row({"A", "B", "C"});
  auto* lok = new_lok_in(zones[1]);
  at(zones[1]).see(lok, 1);
  EXPECT_EQ(place(lok), "B.right..B.left");
  at(zones[0]).occupy();
  EXPECT_EQ(place(lok), "B.right..B.left");
  lok->reconnect();
  at(zones[0]).occupy();
  EXPECT_EQ(place(lok), "B.right..A.left");
}

TEST_F(Tracking, cannot_tell_which_way_it_stands_over_a_point_that_was_thrown_under_it) {
  auto* a = zone("A");
  auto* gate = layout().get_blocks().add(new Gate);
  auto* b = zone("B");
  a->right.connect(&gate->left);
  gate->right.connect(&b->left);
  gate->set_input(&at(b));
  auto* lok = new_lok();
  lok->set_direction(Direction::Reverse);
  at(a).see(lok, 2);  // taken as RailCom says, whatever the direction
  at(b).occupy();
  EXPECT_EQ(place(lok), "A.left..B.right");
  gate->set_open(false);
  at(a).see(lok, 2);
  EXPECT_EQ(place(lok), "A.left..B.right");
  gate->set_open(true);
  at(a).see(lok, 2);
  EXPECT_EQ(place(lok), "B.right..A.left");
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
  EXPECT_EQ(place(lok), "A.left..C.right");
  EXPECT_EQ(held(lok), "ABCX");
  at(a).occupy(false);
  EXPECT_EQ(place(lok), "B.left..C.right");
  EXPECT_EQ(held(lok), "BCX");  // until C, the rear detector now, has been left as well
  auto* d = zone("D");
  c->right.connect(&d->left);
  lok->reconnect();
  at(d).occupy();
  at(c).occupy();  // still there
  EXPECT_EQ(place(lok), "B.left..D.right");
  at(c).occupy(false);
  EXPECT_EQ(place(lok), "D.left..D.right");
  EXPECT_EQ(held(lok), "D");
  at(d).occupy(false);
  EXPECT_EQ(place(lok), "nowhere");
}

TEST_F(Tracking, stays_where_no_detector_is_left_to_follow_it) {
  auto* a = zone("A");
  auto* b = zone("B", false);
  a->right.connect(&b->left);
  auto* lok = new_lok_in(a);
  b->signal_occupied().emit();
  EXPECT_EQ(place(lok), "A.left..B.right");
  a->set_input(nullptr);
  a->signal_occupied().emit();
  EXPECT_EQ(place(lok), "A.left..B.right");
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

TEST_F(Tracking, takes_a_report_that_is_as_far_ahead_as_behind_for_one_ahead) {
  for (const unsigned orientation : {1u, 2u}) {
    const auto zones = ring({"A", "B", "C", "D"});
    auto* lok = new_lok_in(zones[0]);
    at(zones[2]).see(lok, orientation);
    EXPECT_EQ(place(lok), orientation == 2 ? "A.left..C.right" : "A.right..C.left");
    EXPECT_EQ(held(lok), orientation == 2 ? "ABC" : "ACD");
    layout().new_document(false);
  }
}

TEST_F(Tracking, goes_on_from_where_railcom_sees_it_over_what_is_occupied) {
  const auto zones = row({"A", "B", "C", "D", "E"});
  auto* lok = new_lok_in(zones[0]);
  at(zones[3]).occupy();
  at(zones[2]).see(lok, 2);
  EXPECT_EQ(place(lok), "A.left..D.right");
  EXPECT_EQ(held(lok), "ABCD");
}

TEST_F(Tracking, jumps_over_a_block_that_it_holds_itself) {
  const auto zones = row({"A", "B", "C"});
  auto* lok = new_lok_in(zones[0]);
  zones[1]->set_lok(lok);
  at(zones[2]).see(lok, 2);
  EXPECT_EQ(place(lok), "C.left..C.right");
  EXPECT_EQ(held(lok), "AB");
}

// The tail walks away from C. The crossing stops it when it comes back there by the other track.
TEST_F(Tracking, jumps_before_a_block_that_it_has_just_passed) {
  for (const bool comes_back : {true, false}) {
    const auto zones = row({"A", "B", "C"});
    auto* loop = zone("L");
    auto* crossing = layout().get_blocks().add(new Crossing);
    crossing->set_name("X");
    zones[0]->left.connect(&crossing->links.top_left);
    crossing->links.bottom_right.connect(&loop->left);
    if (comes_back) loop->right.connect(&crossing->links.top_right);
    auto* lok = new_lok_in(zones[0]);
    at(zones[2]).see(lok, 0);
    EXPECT_EQ(place(lok), "C.right..C.left?");
    EXPECT_EQ(held(lok), comes_back ? "ALX" : "A");
    layout().new_document(false);
  }
}

TEST_F(Tracking, jumps_when_the_way_ends_and_leaves_its_blocks_held) {
  const auto zones = row({"A", "B", "C"});
  auto* far = zone("Z");
  auto* other = new_lok("other");
  zones[1]->set_lok(other);
  auto* lok = new_lok_in(zones[0]);
  at(zones[2]).see(lok, 2);
  EXPECT_EQ(place(lok), "C.left..C.right");  // B in between is held
  EXPECT_EQ(held(lok), "A");
  at(far).see(lok, 2);
  EXPECT_EQ(place(lok), "C.left..C.right");  // nowhere near: no case applies
  other->destroy();
  EXPECT_EQ(held(lok), "A");
  zones[0]->replace_lok(nullptr);  // the operator frees it
  EXPECT_EQ(held(lok), "");
}

TEST_F(Tracking, reverses_its_place_with_its_direction) {
  const auto zones = row({"A", "B", "C"});
  auto* lok = new_lok_in(zones[1]);
  lok->set_direction(Direction::Reverse);
  EXPECT_EQ(place(lok), "B.right..B.left");
  pass(zones[1], zones[0]);
  EXPECT_EQ(place(lok), "A.right..A.left");
}

// The head comes back to where it began, over what is occupied or has no detector.
TEST_F(Tracking, gains_no_other_front_by_going_round_a_circle_that_closed_behind_the_train) {
  const auto zones = row({"A", "B", "C", "D"});
  auto* point = layout().get_points().add(new Point);
  point->set_name("P");
  zones[0]->right.disconnect();
  zones[0]->right.connect(point->state_link(point->states()[0]));
  point->common.connect(&zones[1]->left);
  zones[3]->right.connect(point->state_link(point->states()[1]));
  auto* lok = new_lok_in(zones[0]);
  lok->reconnect();
  at(zones[1]).occupy();
  point->signal_occupied().emit();
  EXPECT_EQ(place(lok), "A.left..B.right");
  point->set_state(point->states()[1]);
  at(zones[3]).occupy();
  at(zones[2]).occupy();
  EXPECT_EQ(place(lok), "A.left..B.right");
  EXPECT_EQ(held(lok), "ABCDP");
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
