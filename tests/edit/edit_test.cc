// Whatever is done to a document can be undone, and redone, to the last byte.

#include <gtest/gtest.h>

#include <functional>

#include "devices/ecos/device_ecos.h"
#include "diagram/view.h"
#include "diagram/view_label.h"
#include "diagram/view_zone.h"
#include "edit/edit_journal.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "scripts/script.h"
#include "scripts/script_command_set_function.h"
#include "scripts/script_command_set_speed.h"
#include "scripts/script_event_lok_speed.h"
#include "scripts/script_event_occupied.h"
#include "scripts/script_registry.h"
#include "tests/edit/edit_fixture.h"
#include "track/point.h"

namespace zemblar::test {
namespace {

TEST_F(EditTest, steps_have_names_and_are_merged_dropped_and_forgotten) {
  Zone* zone = nullptr;
  act([&] { zone = layout().get_blocks().add(new Zone); });
  EXPECT_EQ(next_undo(), "Add “Zone 1”");
  act([&] { zone->set_name("Yard"); });
  act([&] { zone->set_name("Shed"); });
  EXPECT_EQ(next_undo(), "Change “Zone 1”");
  act([] {});
  ASSERT_TRUE(undo());
  EXPECT_EQ(zone->get_name(), "Zone 1") << "one name after the other is one change";
  ASSERT_TRUE(redo());
  EXPECT_EQ(zone->get_name(), "Shed");
  zone->set_name("Quay");  // in another window
  act([&] { zone->set_name("Pier"); });
  ASSERT_TRUE(undo());
  EXPECT_EQ(zone->get_name(), "Quay") << "not merged over that";
  zone->set_name("Shed");
  for (const bool on : {true, false}) act([&] { zone->set_invert(on); });
  EXPECT_EQ(next_undo(), "Change “Zone 1”");
  ASSERT_TRUE(undo());
  EXPECT_EQ(zone->get_name(), "Zone 1") << "to and fro is no step";
  ASSERT_TRUE(redo());
  act([&] { zone->set_invert(true); });
  ASSERT_TRUE(undo());
  zone->set_name("Done elsewhere");
  ASSERT_TRUE(redo());
  EXPECT_EQ(zone->get_name(), "Done elsewhere") << "that setting is not of this step";

  auto& drawn = draw<ViewZone>(*zone, {0, 0});
  act([&] { drawn.get_link_node("left")->drag(ViewNode::body, {-90, 0}); });
  EXPECT_EQ(next_undo(), "Move “Done elsewhere”");
  act([&] { drawn.remove(); });
  EXPECT_EQ(next_undo(), "Remove “Done elsewhere” From View");
  ASSERT_TRUE(undo());
  EXPECT_EQ(next_undo(), "Move “Done elsewhere”");
  zone->destroy();
  EXPECT_EQ(next_undo(), "") << "all of them were about what has ended elsewhere";
  EXPECT_FALSE(undo());

  for (int i = 0; i < 120; ++i) act([&] { layout().get_blocks().add(new Zone); });
  int undone = 0;
  while (undo()) ++undone;
  EXPECT_EQ(undone, 100);
  EXPECT_EQ(layout().get_blocks().child_count(), 20u);
  ASSERT_TRUE(redo());
  act([&] { layout().get_loks().add(new Lok); });
  EXPECT_FALSE(redo()) << "a new step ends what could be redone";

  bool forgotten = false;
  const ScopedConnection listening(journal.signal_forgotten().connect([&] { forgotten = true; }));
  ASSERT_FALSE(Layout::open(folder.write("damaged.zblt", "objects: 5")));
  EXPECT_FALSE(forgotten) << "the document has stayed";
  steps.clear();
  act([&] { layout().new_document(true); });
  EXPECT_TRUE(forgotten);
  EXPECT_EQ(next_undo(), "") << "nor is the first view a step";
  act([&] { layout().get_loks().add(new Lok); });
  EXPECT_EQ(next_undo(), "Add “Locomotive 1”");
}

TEST_F(EditTest, what_was_deleted_comes_back_with_all_that_refers_to_it) {
  auto* station = layout().get_devices().add(new ECoS);
  station->set_host("example.invalid");
  auto* other = layout().get_devices().add(new ECoS);
  auto* group = layout().get_loks().add(new LokGroup);
  auto* lok = group->add(new Lok);
  lok->get_decoders()[0]->set_device(static_cast<Device*>(station));
  auto* point = layout().get_points().add(new Point);
  point->get_outputs()[0]->set_device(station);
  auto* zone = layout().get_blocks().add(new Zone);
  zone->left.connect(point->state_link(point->states()[1]));
  auto* label = &draw<ViewLabel>(*zone, {10, 10});
  label->set_align(Anchor::TopLeft);
  label->set_align(Anchor::Centre);
  EXPECT_EQ(label->get_align(), Anchor::TopLeft) << "a label stands beside its zone";
  auto* horn = lok->add(new Function(lok));
  auto* script = layout().get_scripts().add(new Script);
  auto* occupied = new ScriptEventOccupied;
  script->add_condition(occupied);
  occupied->choose(zone);
  auto* slow = new ScriptCommandSetSpeed(*script);
  script->add_command(slow);
  slow->set_lok(lok);
  auto* blow = new ScriptCommandSetFunction(*script);
  script->add_command(blow);
  blow->set_function(horn);
  const auto start = bytes();
  other->set_use_as_default(true);
  const std::vector<std::function<void()>> deletions = {
      // Ends in the entry of another one.
      [&] { layout().get_loks().child_at(0)->child_at(0)->child_at(0)->destroy(); },
      [&] { layout().get_devices().child_at(0)->destroy(); },
      [&] { layout().get_loks().child_at(0)->destroy(); },
      [&] { layout().get_points().child_at(0)->destroy(); },
      [&] { layout().get_blocks().child_at(0)->destroy(); },
      [&] { layout().get_views().child_at(0)->destroy(); },
      [&] { layout().get_scripts().child_at(0)->destroy(); },
  };
  for (const auto& deletion : deletions) {
    act(deletion);
    const std::vector<std::string> known{start, bytes()};
    expect_undo(known);
    expect_redo(known);
    expect_undo(known);
  }
}

TEST_F(EditTest, what_was_moved_goes_back_without_an_end) {
  auto* group = layout().get_loks().add(new LokGroup);
  auto* inner = group->add(new LokGroup);
  auto* lok = layout().get_loks().add(new Lok);
  for (int i = 0; i < 3; ++i) lok->add(new Function(lok));
  lok->set_name("Express");
  inner->add(new Lok)->set_name("Express");
  lok->set_speed(40);
  bool ended = false;
  const ScopedConnection watch(lok->signal_deleted().connect([&] { ended = true; }));
  const struct {
    const char* name;
    std::function<void()> act;
  } moves[] = {
      {"Reorder “Function 1”", [&] { lok->child_at(0)->move_to(*lok, 2); }},
      {"Move “Express” Elsewhere", [&] { lok->move_to(*group, 0); }},
      {"Move “Express” Elsewhere", [&] { lok->move_to(*inner, 0); }},
      {"Reorder “Locomotive 1”", [&] { lok->move_to(*inner, 1); }},
      {"Move “Locomotive Group 1” Elsewhere", [&] { inner->move_to(layout().get_loks(), 0); }},
      {"Move “Locomotive 1” Elsewhere", [&] { lok->move_to(layout().get_loks(), 1); }},
  };
  std::vector<std::string> known{bytes()};
  for (const auto& move : moves) {
    act(move.act);
    EXPECT_EQ(next_undo(), move.name);
    known.push_back(bytes());
  }
  for (int round = 0; round < 2; ++round) {
    expect_undo(known);
    EXPECT_EQ(lok->get_name(), "Express");
    expect_redo(known);
  }
  EXPECT_FALSE(ended);
  EXPECT_EQ(lok->get_speed(), 40U);

  // All in one step: what it stood in ends, and what it comes to stand in is new.
  act([&] {
    auto* shed = layout().get_loks().add(new LokGroup);
    lok->move_to(*shed, 0);
    inner->move_to(*shed, 0);
    group->destroy();
  });
  known = {known.back(), bytes()};
  for (int round = 0; round < 2; ++round) {
    expect_undo(known);
    expect_redo(known);
  }
}

// Lines that an undo does not touch go on watching; one that it brings back in the place of another
// watches as that one did.
TEST_F(EditTest, a_line_sleeps_or_watches_after_undo_as_it_did_before) {
  for (const bool awake : {false, true}) {
    for (const bool deleted : {false, true}) {
      SCOPED_TRACE(testing::Message() << awake << deleted);
      auto* block = layout().get_blocks().add(new Zone);
      auto* made = layout().get_scripts().add(new Script);
      made->add_condition(new ScriptEventOccupied);
      auto* second = new ScriptEventOccupied;
      made->add_condition(second);
      second->choose(block);
      auto* names = second;
      if (!awake) {
        // As from a file.
        layout().open(folder.write("asleep.zblt", layout().serialize()));
        block = dynamic_cast<Zone*>(layout().get_blocks().child_at(0));
        made = dynamic_cast<Script*>(layout().get_scripts().child_at(0));
        names = dynamic_cast<ScriptEventOccupied*>(made->get_condition(1));
      }
      act([&] { deleted ? block->destroy() : names->choose_this(); });
      ASSERT_TRUE(undo());
      const auto* line = dynamic_cast<ScriptEventOccupied*>(made->get_condition(1));
      EXPECT_EQ(line->get_block(), layout().get_blocks().child_at(0));
      EXPECT_EQ(line->is_armed(), awake);
      layout().new_document(false);
      steps.clear();
    }
  }
}

TEST_F(EditTest, an_edit_of_a_script_is_taken_back_line_by_line) {
  auto* block = layout().get_blocks().add(new Zone);
  auto* made = layout().get_scripts().add(new Script);
  auto* first = new ScriptEventOccupied;
  auto* second = new ScriptEventOccupied;
  made->add_condition(first);
  made->add_condition(second);
  first->choose_any();
  second->choose(block);
  for (const auto* key : {"set-speed", "wait", "save"}) {
    made->add_command(create_script_command(key, *made));
  }
  const std::vector<std::function<void()>> edits = {
      [&] { made->set_while(true); },
      [&] { made->set_off(*made->get_condition(0), true); },
      [&] { made->set_off(*made->get_condition(0), false); },
      [&] { made->set_off(*made->get_command(0), true); },
      [&] { made->get_condition(1)->set_or_flag(true); },
      [&] { made->move_command(0, 2); },
      [&] { made->remove_command(1); },
      [&] { made->add_condition(new ScriptEventLokSpeed); },
      [&] { dynamic_cast<ScriptEventOccupied&>(*made->get_condition(1)).choose_occupied(false); },
      [&] { made->move_condition(2, 0); },
      [&] { made->remove_condition(0); },
      [&] { made->get_command(0)->set_spin_value(1, 2); },
      [&] { made->remove_command(0), made->remove_command(0); },
  };
  std::vector<std::string> known{bytes()};
  for (const auto& edit : edits) {
    act(edit);
    known.push_back(bytes());
  }
  expect_undo(known);
  EXPECT_EQ(made->get_condition(0), first);
  EXPECT_FALSE(made->sleeps());
  unsigned finished = 0;
  made->signal_instance_finished().connect([&](const EventInstance&) { ++finished; });
  auto* lok = layout().get_loks().add(new Lok);
  block->set_lok(lok);
  block->clear_lok(lok);
  EXPECT_EQ(finished, 1u);
  lok->destroy();
  expect_redo(known);
}

TEST_F(EditTest, what_others_have_turned_round_stays_so) {
  auto* one = layout().get_loks().add(new LokGroup);
  auto* two = one->add(new LokGroup);
  act([&] { two->move_to(layout().get_loks(), 1); });
  one->move_to(*two, 0);
  undo();
  EXPECT_EQ(one->get_parent(), two);
  EXPECT_EQ(two->get_parent(), &layout().get_loks());

  auto* point = layout().get_points().add(new Point);
  act([&] { point->add_state(); });
  undo();
  point->add_output();
  redo();
  EXPECT_EQ(point->states().size(), 3u);
}

}  // namespace
}  // namespace zemblar::test
