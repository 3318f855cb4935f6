#include "locomotives/function.h"

#include "core/string_pool.h"
#include "locomotives/lok.h"
#include "locomotives/script_overlay.h"
#include "runtime/timer.h"
#include "tests/support/fake_station.h"

namespace zemblar::test {
namespace {

using namespace std::chrono_literals;

class FunctionTest : public LayoutTest {
 protected:
  FunctionTest() : lok(layout().get_loks().add(new Lok)), function(lok->add(new Function(lok))) {
    for (const auto* name : {"state", "state-overlay"}) {
      function->connect_property_changed(name, [this, name] { told.push_back(name); });
    }
  }

  VirtualClock clock;
  FakeStation* station = FakeStation::in_service();
  Lok* lok;
  Function* function;
  Log told;
};

TEST_F(FunctionTest, of_every_type_but_a_pulse_holds_its_state) {
  using Type = Function::Type;
  for (const auto type : {Type::Toggle, Type::Trigger, Type::Script}) {
    function->set_type(type);
    function->set_function(static_cast<unsigned>(type));
    const auto name = "3 f" + std::to_string(static_cast<int>(type));
    function->set_state(true);
    function->set_state(true);
    EXPECT_EQ(station->sent(), Log{name + " on"});
    function->set_state(false);
    EXPECT_EQ(station->sent(), Log{name + " off"});
  }
  EXPECT_EQ(told.size(), 12u);
  EXPECT_EQ(Log(told.begin(), told.begin() + 2), (Log{"state", "state-overlay"}));
}

TEST_F(FunctionTest, pulses_for_a_fifth_of_a_second_and_each_press_for_itself) {
  function->set_type(Function::Type::Pulse);
  function->set_state(true);
  EXPECT_EQ(station->sent(), Log{"3 f0 on"});
  EXPECT_EQ(told, (Log{"state", "state-overlay"}));
  clock.advance(100ms);
  function->set_state(false);
  function->set_state(true);
  EXPECT_EQ(station->sent(), Log{"3 f0 on"});
  EXPECT_FALSE(function->get_state() || function->get_state_overlay());
  clock.advance(99ms);
  EXPECT_EQ(station->sent(), Log{});
  clock.advance(1ms);
  EXPECT_EQ(station->sent(), Log{"3 f0 off"});
  clock.advance(100ms);
  EXPECT_EQ(station->sent(), Log{"3 f0 off"});
}

TEST_F(FunctionTest, ends_a_pulse_where_it_began_or_nowhere) {
  function->set_type(Function::Type::Pulse);
  lok->add_decoder().set_address(Address(9));
  function->set_state(true);
  function->set_function(5);
  function->set_decoder(1);
  function->set_state(true);
  function->destroy();
  EXPECT_EQ(station->sent(), (Log{"3 f0 on", "9 f5 on"}));
  lok->remove_decoder(1);
  clock.advance(200ms);
  EXPECT_EQ(station->sent(), Log{"3 f0 off"});

  auto* last = lok->add(new Function(lok));
  last->set_type(Function::Type::Pulse);
  last->set_state(true);
  layout().new_document(false);
  clock.advance(1s);
}

TEST_F(FunctionTest, follows_the_last_overlay_that_names_it) {
  ScriptOverlay first;
  ScriptOverlay last;
  first.states[function] = false;
  last.states[function] = true;
  function->apply_state_overlay();
  EXPECT_TRUE(function->get_state_overlay());
  EXPECT_FALSE(function->get_state());
  last.states.clear();
  function->set_state(true);
  EXPECT_FALSE(function->get_state_overlay());
  function->apply_state_overlay();
  EXPECT_EQ(station->sent(), (Log{"3 f0 on", "3 f0 off", "3 f0 off"}));
  first.states.clear();
  function->apply_state_overlay();
  EXPECT_EQ(station->sent(), Log{"3 f0 on"});
}

TEST_F(FunctionTest, follows_its_decoder_when_others_leave_the_locomotive) {
  const struct {
    unsigned decoder;
    unsigned removed;
    unsigned then;
  } cases[] = {{2, 0, 1}, {0, 2, 0}, {1, 1, 1}, {2, 2, 1}};
  for (const auto& one : cases) {
    while (lok->get_decoders().size() < 3) lok->add_decoder();
    function->set_decoder(one.decoder);
    lok->remove_decoder(one.removed);
    EXPECT_EQ(function->get_decoder(), one.then) << one.decoder << " without " << one.removed;
  }
  function->set_decoder(99);
  function->set_state(true);  // leads nowhere, and harms nobody
  EXPECT_EQ(station->sent(), Log{});
}

TEST_F(FunctionTest, keeps_its_name_in_the_pool_without_a_gap) {
  function->set_name("Light");
  auto* other = lok->add(new Function(lok));
  int fired = 0;
  const ScopedConnection watch(function_names().signal_changed().connect([&] {
    ++fired;
    EXPECT_TRUE(function_names().contains(function->get_name()));
  }));
  function->set_name("Horn");
  EXPECT_EQ(fired, 2);
  EXPECT_EQ(function_names().get_all(), (std::vector<Glib::ustring>{"Function 1", "Horn"}));
  other->destroy();
  EXPECT_EQ(function_names().get_all(), (std::vector<Glib::ustring>{"Horn"}));
}

TEST_F(FunctionTest, may_be_destroyed_by_its_own_handler) {
  function->connect_property_changed("state", [this] { function->destroy(); });
  function->set_state(true);
  EXPECT_TRUE(lok->empty());
}

}  // namespace
}  // namespace zemblar::test
