// A block that is kept for one locomotive: who gets it, who is braked before it, and how it ends.

#include "track/reservation.h"

#include <gtest/gtest.h>

#include <optional>

#include "tests/support/small_railway.h"
#include "track/crossing.h"

namespace zemblar::test {
namespace {

using State = Reservation::State;

class Reservations : public SmallRailway {
 protected:
  Reservations() : zones(row({"A", "B", "C", "D"})), lok(new_lok_in(zones[3], "far")) {}

  std::vector<Zone*> zones;
  Lok* lok;
};

TEST_F(Reservations, others_are_braked_before_a_block_that_reads_free_and_go_on_after_it) {
  auto* other = new_lok_in(zones[0], "other");
  auto* b = zones[1];
  {
    const Reservation reservation(*b, *lok);
    EXPECT_EQ(reservation.get_state(), State::keeps);
    EXPECT_EQ(b->get_lok(), lok);
    EXPECT_TRUE(other->get_brake());
    unsigned changes = 0;
    const ScopedConnection counted = other->signal_brake_changed().connect([&] { ++changes; });
    at(zones[0]).occupy();  // looks again
    at(b).occupy(false);
    EXPECT_TRUE(other->get_brake());
    EXPECT_EQ(changes, 0u);
    EXPECT_EQ(place(other), "A.left..A.right");
  }
  EXPECT_EQ(b->get_lok(), nullptr);
  EXPECT_FALSE(other->get_brake());

  std::optional<Reservation> distant(std::in_place, *zones[2], *lok);
  EXPECT_FALSE(other->get_brake());
  at(b).occupy();
  EXPECT_TRUE(other->get_brake()) << "as soon as it is beside the block";
  distant.reset();
  EXPECT_FALSE(other->get_brake());

  const Reservation behind(*zones[2], *lok);
  other->set_brake(false);
  other->set_direction(Direction::Reverse);
  other->set_direction(Direction::Forwards);
  EXPECT_TRUE(other->get_brake()) << "also when it has turned round";
}

TEST_F(Reservations, a_block_that_is_not_free_is_given_in_the_order_of_asking) {
  auto* b = zones[1];
  auto* first = new_lok_in(zones[0], "first");
  auto* second = new_lok("second");
  at(b).occupy();  // by the first one
  at(zones[0]).occupy(false);
  std::optional<Reservation> wanted(std::in_place, *b, *lok);
  std::optional<Reservation> next(std::in_place, *b, *second);
  unsigned told = 0;
  next->signal_changed().connect([&told] { ++told; });
  EXPECT_EQ(wanted->get_state(), State::waits);
  at(zones[2]).occupy();
  EXPECT_TRUE(first->get_brake()) << "the far one stands before it";
  at(b).occupy(false);
  EXPECT_EQ(wanted->get_state(), State::keeps);
  EXPECT_EQ(next->get_state(), State::waits);
  const Reservation again(*b, *lok);
  EXPECT_EQ(again.get_state(), State::keeps) << "it has the block already";
  wanted.reset();
  EXPECT_EQ(b->get_lok(), lok) << "still kept";
  b->replace_lok(nullptr);
  EXPECT_EQ(again.get_state(), State::over) << "the operator has freed it";
  EXPECT_EQ(b->get_lok(), second);
  EXPECT_EQ(told, 1u);
  next.reset();
  EXPECT_EQ(b->get_lok(), nullptr);

  at(b).occupy();  // by something that nobody knows
  const Reservation unknown(*b, *second);
  EXPECT_EQ(unknown.get_state(), State::waits);
  at(b).occupy(false);
  EXPECT_EQ(unknown.get_state(), State::keeps);
}

TEST_F(Reservations, it_lasts_until_the_train_has_passed) {
  auto* train = new_lok_in(zones[0], "train");
  auto* b = zones[1];
  auto* waiting = new_lok("waiting");
  std::optional<Reservation> own(std::in_place, *b, *train);
  const Reservation next(*b, *waiting);
  EXPECT_FALSE(train->get_brake());
  at(b).occupy();
  EXPECT_EQ(place(train), "A.left..B.right");
  at(b).occupy(false);
  EXPECT_EQ(place(train) + held(train), "A.left..A.rightAB") << "the head falls back";
  at(b).occupy();
  EXPECT_EQ(place(train), "A.left..B.right");
  own.reset();
  EXPECT_EQ(b->get_lok(), train) << "it stands there";
  own.emplace(*b, *train);
  at(zones[0]).occupy(false);
  at(zones[2]).occupy();
  EXPECT_EQ(own->get_state(), State::keeps);
  at(b).occupy(false);
  EXPECT_EQ(own->get_state(), State::passed);
  EXPECT_EQ(next.get_state(), State::keeps);
  EXPECT_EQ(held(train), "C");
  train->set_speed(40);
  train->set_direction(Direction::Reverse);
  EXPECT_EQ(own->get_state(), State::waits) << "it has turned round to the block";
  EXPECT_TRUE(train->get_brake());
  train->set_speed(60);
  b->replace_lok(nullptr);
  EXPECT_EQ(own->get_state(), State::keeps);
  EXPECT_FALSE(train->get_brake());
  EXPECT_EQ(train->get_speed_overlay(), 60u) << "as was wished for while it waited";

  train->set_direction(Direction::Forwards);
  own.emplace(*zones[3], *train);  // where the far one stands
  EXPECT_EQ(own->get_state(), State::waits);
  EXPECT_TRUE(train->get_brake()) << "which has not reported anything since";
}

TEST_F(Reservations, a_train_that_railcom_sees_there_first_is_placed_there) {
  auto* b = zones[1];
  auto* lost = new_lok("lost");
  const Reservation for_lost(*b, *lost);
  at(b).see(lost, 2);
  EXPECT_EQ(place(lost), "B.left..B.right");

  const Reservation for_far(*zones[0], *lok);
  at(zones[0]).see(lok, 2);  // it has passed two blocks unseen
  EXPECT_EQ(place(lok), "A.left..A.right");
}

// The brake that a reservation sets is released again wherever the track ends behind it, and
// whatever has exchanged the ends.
TEST_F(Reservations, a_train_is_let_go_when_a_reservation_ends) {
  auto* siding = zone("S", false);
  zones[3]->right.connect(&siding->left);
  lok->reconnect();
  std::optional<Reservation> first(std::in_place, *siding, *new_lok("first"));
  const Reservation own(*siding, *lok);
  EXPECT_TRUE(lok->get_brake());
  first.reset();
  EXPECT_EQ(own.get_state(), State::keeps);
  EXPECT_FALSE(lok->get_brake());

  auto* train = new_lok_in(zones[1], "train");
  first.emplace(*zones[0], *lok);
  EXPECT_FALSE(train->get_brake());
  at(zones[1]).see(train, 1);
  EXPECT_TRUE(train->get_brake()) << "it drives to the other side";
  first.reset();
  EXPECT_FALSE(train->get_brake());
}

TEST_F(Reservations, a_report_from_beyond_moves_the_train_through_what_is_reserved_for_it) {
  auto* train = new_lok_in(zones[0], "train");
  const Reservation own(*zones[1], *train);
  at(zones[2]).see(train, 2);
  EXPECT_EQ(place(train), "A.left..C.right");
  at(zones[0]).occupy(false);
  EXPECT_EQ(held(train), "C");
}

TEST_F(Reservations, nothing_stays_reserved_when_a_locomotive_or_a_block_ends) {
  auto* b = zones[1];
  auto* other = new_lok_in(zones[0], "other");
  auto* going = new_lok("going");
  const Reservation first(*b, *going);
  const Reservation second(*b, *lok);
  const Reservation third(*b, *other);
  going->destroy();
  EXPECT_EQ(first.get_state(), State::over);
  EXPECT_EQ(b->get_lok(), lok);
  EXPECT_TRUE(other->get_brake());
  lok->destroy();
  EXPECT_EQ(third.get_state(), State::keeps);
  EXPECT_FALSE(other->get_brake());
  at(b).occupy();
  std::optional<Reservation> distant(std::in_place, *zones[2], *new_lok("distant"));
  EXPECT_TRUE(other->get_brake());
  zones[2]->destroy();
  EXPECT_EQ(distant->get_state(), State::over);
  EXPECT_TRUE(other->get_brake()) << "the track ends there now";
  b->destroy();
  EXPECT_EQ(third.get_state(), State::over);
}

// The crossing has the input of the zone beyond it. Without the reservation the one that stands
// takes it when the other one lights it.
TEST_F(Reservations, who_stands_before_a_crossing_does_not_take_it_from_the_one_that_comes) {
  auto* crossing = layout().get_blocks().add(new Crossing);
  crossing->set_name("X");
  crossing->set_input(zones[1]->get_input());
  zones[0]->right.disconnect();
  zones[0]->right.connect(&crossing->links.top_left);
  crossing->links.bottom_right.connect(&zones[1]->left);
  auto* across = zone("across");
  across->right.connect(&crossing->links.bottom_left);
  auto* stands = new_lok_in(across, "stands");
  auto* comes = new_lok_in(zones[0], "comes");
  const Reservation own(*crossing, *comes);
  const Reservation next(*crossing, *stands);
  EXPECT_TRUE(stands->get_brake());
  at(zones[1]).occupy();
  EXPECT_EQ(place(stands), "across.left..across.right");
  EXPECT_EQ(held(comes), "ABX");
  at(zones[0]).occupy(false);
  at(zones[2]).occupy();
  EXPECT_TRUE(stands->get_brake());
  at(zones[1]).occupy(false);
  EXPECT_FALSE(stands->get_brake());
  EXPECT_EQ(held(stands), "Xacross");
}

}  // namespace
}  // namespace zemblar::test
