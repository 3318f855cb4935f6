// What may end under a run, and when: worth most under AddressSanitizer.

#include "tests/scripts/script_scene.h"
#include "track/block_control_turn.h"

namespace zemblar::test {
namespace {

/// Two runs that stand in a wait, in levels of theirs, over one locomotive.
class Survival : public ScriptScene {
 protected:
  Survival() { build(); }

  void build() {
    block = zone("A");
    lok = new_lok("x");
    horn = function(lok, "horn");
    lok->set_speed(100);
    sleeper = script_on("Any Block", true);
    waiter = script_on("A", true);
    for (auto* made : {sleeper, waiter}) {
      command(*made, "save");
      set_speed(*made, "This Locomotive", 50);
      command(*made, "set-function", {"x", "horn", "On"});
      if (made == sleeper) wait(*made, 5);
      set_speed(*made, "This Locomotive", 20);
      act(*made, [this](ScriptContext& context) { gone_on += context.lok() ? 1 : 100; });
    }
    block->set_lok(lok);
  }
  [[nodiscard]] unsigned runs() const {
    return (sleeper ? sleeper->num_runs() : 0) + (waiter ? waiter->num_runs() : 0);
  }

  Zone* block = nullptr;
  Lok* lok = nullptr;
  Function* horn = nullptr;
  Script* sleeper = nullptr;
  Script* waiter = nullptr;
  int gone_on = 0;
};

TEST_F(Survival, documents_that_are_left) {
  ASSERT_EQ(runs(), 2u);
  ASSERT_EQ(gone_on, 1);
  unsigned started = 0;
  auto* late = script_on("A");
  act(*late, [&](ScriptContext&) { ++started; });
  pick(*late->get_condition(0), 2, "Unoccupied");
  condition(*late, "Any Block", false, true);
  started = 0;
  layout().new_document(false);
  clock.advance(10s);
  EXPECT_EQ(gone_on, 1) << "cancelled";
  EXPECT_EQ(started, 0u) << "the end of a document is no event of the railway";
  EXPECT_TRUE(layout().script_overlays.empty());

  build();
  const auto next = folder.write("next.zblt", "%YAML 1.2\ntitle: x\nobjects: []\n");
  ASSERT_TRUE(Layout::open(next));
  clock.advance(10s);
  EXPECT_EQ(gone_on, 2);
  EXPECT_TRUE(layout().script_overlays.empty());

  // A file that cannot be opened leaves runs as they are.
  layout().new_document(false);
  build();
  ASSERT_FALSE(Layout::open(folder.write("bad.zblt",
                                         "%YAML 1.2\ntitle: x\nobjects: [!script "
                                         "{commands: [[wait]]}]\n")));
  EXPECT_EQ(runs(), 2u);
  clock.advance(5s);
  EXPECT_EQ(gone_on, 4);
}

TEST_F(Survival, a_run_ends_what_the_next_one_was_to_be_for) {
  layout().new_document(false);
  std::vector<Lok*> loks;
  for (const auto* name : {"A", "B", "C"}) {
    loks.push_back(new_lok(name));
    zone(name)->set_lok(loks.back());
  }
  auto* made = script();
  unsigned started = 0;
  act(*made, [&](ScriptContext& context) {
    ++started;
    const auto* mine = context.lok();
    for (auto* other : std::exchange(loks, {})) {
      if (other != mine) other->destroy();
    }
  });
  condition(*made, "Any Block");
  EXPECT_EQ(started, 1u);
  EXPECT_EQ(made->num_runs(), 0u);
}

TEST_F(Survival, objects_that_end_under_runs_that_wait) {
  const struct {
    const char* name;
    std::function<void()> end;
    unsigned runs;      // afterwards; the one that sleeps misses the end of its instance
    unsigned in_force;  // the locomotive's speed, while it lives
  } ends[] = {
      {"the locomotive", [&] { lok->destroy(), lok = nullptr, horn = nullptr; }, 1, 0},
      {"the function", [&] { horn->destroy(), horn = nullptr; }, 2, 25},
      {"the block", [&] { block->destroy(); }, 1, 63},
      {"a command", [&] { waiter->remove_command(1); }, 1, 63},
      {"the script that sleeps", [&] { sleeper->destroy(), sleeper = nullptr; }, 1, 25},
      {"the script that waits", [&] { waiter->destroy(), waiter = nullptr; }, 1, 63},
      {"both", [&] { layout().get_scripts().destroy_children(), sleeper = waiter = nullptr; }, 0,
       100},
  };
  for (const auto& [name, end, runs_then, in_force] : ends) {
    layout().new_document(false);
    build();
    ASSERT_EQ(runs(), 2u);
    end();
    clock.advance(0ms);
    EXPECT_EQ(runs(), runs_then) << name;
    EXPECT_EQ(lok ? lok->get_speed_overlay() : 0, in_force) << name;
    EXPECT_EQ(horn && horn->get_state_overlay(), horn && runs_then != 0) << name;
    clock.advance(10s);
    EXPECT_EQ(runs(), runs_then) << name;
    layout().get_scripts().destroy_children();
    EXPECT_EQ(lok ? lok->get_speed_overlay() : 100, 100u) << name;
    EXPECT_TRUE(layout().script_overlays.empty()) << name;
  }
}

TEST_F(Survival, the_old_key_still_ends_a_run_whose_locomotive_has_gone) {
  auto* made = script_on("A", true);
  unsigned ended = 0;
  made->signal_instance_finished().connect([&](const EventInstance& key) {
    EXPECT_EQ(key.block, block);
    ++ended;
  });
  ASSERT_EQ(made->num_runs(), 1u);
  lok->destroy();
  EXPECT_EQ(ended, 1u);
  EXPECT_EQ(made->num_runs(), 0u);
  EXPECT_EQ(gone_on, 1);
  clock.advance(5s);
  EXPECT_EQ(gone_on, 101) << "the sleeper went on, with nobody to command";
}

TEST_F(Survival, what_a_command_ends_under_itself) {
  const std::vector<std::function<void(Script&)>> deeds = {
      [&](Script& made) { made.destroy(); },
      [&](Script& made) { made.remove_command(0); },
      [&](Script& made) { made.move_command(0, 1); },
      [&](Script&) { lok->destroy(); },
      [&](Script&) { block->destroy(); },
      [&](Script&) { layout().new_document(false); },
  };
  for (const auto& deed : deeds) {
    for (const bool in_handler : {false, true}) {
      layout().new_document(false);
      build();
      auto* made = script(true);
      bool done = false;
      if (in_handler) {
        lok->property_speed_overlay().signal_changed().connect([&, made] {
          if (lok->get_speed_overlay() == 13 && !std::exchange(done, true)) deed(*made);
        });
      } else {
        act(*made, [&, made](ScriptContext&) { deed(*made), done = true; });
      }
      set_speed(*made, "This Locomotive", 10);
      wait(*made, 1);
      condition(*made, "A");
      clock.advance(0ms);
      EXPECT_TRUE(done);
      clock.advance(10s);
    }
  }
}

// One wakes the run in the midst of the other's announcement.
TEST_F(Survival, a_run_is_woken_once_when_it_is_cancelled_as_its_instance_ends) {
  for (const bool edit_first : {true, false}) {
    layout().new_document(false);
    build();
    auto* made = script(true);
    const auto edit = [made](const EventInstance&) { command(*made, "save"); };
    if (edit_first) made->signal_instance_finished().connect(edit);
    unsigned ended = 0;
    command(*made, "wait-init-event");
    act(*made, [&](ScriptContext&) { ++ended; });
    condition(*made, "A");
    if (!edit_first) made->signal_instance_finished().connect(edit);
    ASSERT_EQ(made->num_runs(), 1u);
    block->replace_lok(nullptr);
    EXPECT_EQ(made->num_runs(), 0u);
    EXPECT_EQ(ended, edit_first ? 0u : 1u);
  }
}

TEST_F(Survival, triggers_out_of_an_evaluation_are_looked_at_after_it) {
  auto* other = zone("B");
  auto* target = zone("C");
  other->set_lok(new_lok("y"));
  auto* made = script_on("Any Block");
  std::string told;
  made->signal_instance_finished().connect([&](const EventInstance& instance) {
    told += instance.block == target ? "end C;" : "end;";
    at(target).occupy(instance.block != target);
  });
  act(*made, [&](ScriptContext&) {
    told += "start C;";
    at(target).occupy(false);
  });
  pick(*made->get_condition(0), 1, "C");  // both others end by that
  EXPECT_EQ(told, "end;end;start C;end C;");
}

TEST_F(Survival, scripts_run_when_block_control_has_done) {
  auto* ahead = zone("B");
  auto* train = new_lok("y");
  auto* start = zone("S");
  start->right.connect(&ahead->left);
  auto* further = zone("T");
  ahead->right.connect(&further->left);
  at(start).see(train, 2);
  auto* made = script_on("B");
  std::string where;
  act(*made, [&](ScriptContext& context) {
    EXPECT_FALSE(BlockControlTurn::is_running());
    if (context.lok()) where = place(train);
  });
  command(*made, "set-direction", {"This Locomotive", "Reverse"});
  at(ahead).occupy();
  EXPECT_EQ(where, "S.left..B.right") << "the whole train has been placed";
  EXPECT_EQ(place(train), "B.right..S.left") << "and is turned round after that";

  unsigned runs = 0;
  auto* last = script_on("T");
  act(*last, [&](ScriptContext&) { ++runs; });
  BlockControlTurn::run(
      [&] {
        at(further).occupy();
        at(further).occupy();
        EXPECT_EQ(runs, 0u);
        last->destroy();
      },
      [] { return sigc::slot<void>(); });
  EXPECT_EQ(runs, 0u) << "it has ended before its turn";
}

}  // namespace
}  // namespace zemblar::test
