// Whatever is done to a document can be undone, and redone, to the last byte.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

#include "core/document_text.h"
#include "core/private_form.h"
#include "core/yaml_io.h"
#include "devices/device_ecos.h"
#include "diagram/view.h"
#include "diagram/view_crossing.h"
#include "diagram/view_label.h"
#include "diagram/view_link_node.h"
#include "diagram/view_point.h"
#include "diagram/view_scissor.h"
#include "diagram/view_signal.h"
#include "diagram/view_zone.h"
#include "edit/edit_journal.h"
#include "edit/edit_list.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "scripts/script.h"
#include "scripts/script_command_set_function.h"
#include "scripts/script_command_set_speed.h"
#include "scripts/script_event_lok_speed.h"
#include "scripts/script_event_occupied.h"
#include "scripts/script_registry.h"
#include "scripts/script_ui.h"
#include "tests/support/layout_fixture.h"
#include "track/scissor.h"
#include "track/signal.h"

namespace zemblar::test {
namespace {

/// Where two texts begin to differ; empty for equal ones.
std::string difference(const std::string& is, const std::string& expected) {
  if (is == expected) return "";
  const auto [a, b] = std::ranges::mismatch(is, expected);
  const auto from = std::max<std::ptrdiff_t>(0, a - is.begin() - 300);
  return is.substr(from, 380) + "\n--- instead of ---\n" + expected.substr(from, 380);
}

class EditTest : public LayoutTest {
 protected:
  /// One step, as of one event.
  template <typename Action>
  void act(const Action& action) {
    journal.begin([this](std::unique_ptr<EditStep> step) { steps.record(std::move(step)); });
    action();
    journal.end();
  }
  bool undo() {
    const EditJournal::Pause pause;
    return steps.undo();
  }
  bool redo() {
    const EditJournal::Pause pause;
    return steps.redo();
  }
  /// The layout file, and what it cannot hold.
  std::string bytes() {
    auto text = layout().serialize();
    ObjectNumbers numbers;
    const PrivateForm form(numbers);
    YAML::Emitter out;
    out << YAML::BeginSeq;
    for (int section = 0; section < section_count; ++section) {
      for (auto* object : layout().get_toplevel(static_cast<Section>(section))) out << *object;
    }
    out << YAML::EndSeq;
    return text + out.c_str();
  }
  std::string next_undo() {
    const auto* step = steps.next_undo();
    return step ? step->get_name().raw() : "";
  }

  template <typename Drawn, typename Shown>
  Drawn& draw(Shown& shown, const Vector& place) {
    auto* drawn = new Drawn(shown, place);
    view().add_object(drawn);
    return *drawn;
  }
  ViewZone& draw_zone(const Vector& place) {
    return draw<ViewZone>(*layout().get_blocks().add(new Zone), place);
  }
  View& view() {
    auto& views = layout().get_views();
    return dynamic_cast<View&>(views.empty() ? *views.add(new View) : *views.child_at(0));
  }

  EditJournal& journal = EditJournal::get();
  EditList steps;
};

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
      [&] { layout().get_devices().child_at(0)->destroy(); },
      [&] { layout().get_loks().child_at(0)->destroy(); },
      [&] { layout().get_points().child_at(0)->destroy(); },
      [&] { layout().get_blocks().child_at(0)->destroy(); },
      [&] { layout().get_views().child_at(0)->destroy(); },
      [&] { layout().get_scripts().child_at(0)->destroy(); },
  };
  // Ends in the entry of another one.
  act([&] { layout().get_loks().child_at(0)->child_at(0)->child_at(0)->destroy(); });
  ASSERT_TRUE(undo());
  EXPECT_EQ(difference(bytes(), start), "");
  for (const auto& deletion : deletions) {
    act(deletion);
    EXPECT_EQ(next_undo().find("Delete"), 0u) << next_undo();
    ASSERT_TRUE(undo());
    EXPECT_EQ(difference(bytes(), start), "");
    ASSERT_TRUE(redo());
    ASSERT_TRUE(undo());
    EXPECT_EQ(difference(bytes(), start), "");
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
    for (auto i = known.size() - 1; i-- > 0;) {
      ASSERT_TRUE(undo());
      EXPECT_EQ(difference(bytes(), known[i]), "") << moves[i].name;
    }
    EXPECT_EQ(lok->get_name(), "Express");
    for (auto i = 1U; i < known.size(); ++i) {
      ASSERT_TRUE(redo());
      EXPECT_EQ(difference(bytes(), known[i]), "") << moves[i - 1].name;
    }
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
  const auto after = bytes();
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(undo());
    EXPECT_EQ(difference(bytes(), known.back()), "");
    ASSERT_TRUE(redo());
    EXPECT_EQ(difference(bytes(), after), "");
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
      auto* first = new ScriptEventOccupied;
      auto* second = new ScriptEventOccupied;
      made->add_condition(first);
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
  for (auto i = known.size() - 1; i-- > 0;) {
    ASSERT_TRUE(undo());
    EXPECT_EQ(difference(bytes(), known[i]), "") << i;
  }
  EXPECT_EQ(made->get_condition(0), first);
  EXPECT_FALSE(made->sleeps());
  unsigned finished = 0;
  made->signal_instance_finished().connect([&](const EventInstance&) { ++finished; });
  auto* lok = layout().get_loks().add(new Lok);
  block->set_lok(lok);
  block->clear_lok(lok);
  EXPECT_EQ(finished, 1u);
  lok->destroy();
  for (auto i = 1U; i < known.size(); ++i) {
    ASSERT_TRUE(redo());
    EXPECT_EQ(difference(bytes(), known[i]), "") << i;
  }
}

constexpr const char* end_names[] = {"left",      "right",       "common",      "top-left",
                                     "top-right", "bottom-left", "bottom-right"};

/// Does things that a person could do, by chance.
class RandomEdits : public EditTest {
 protected:
  unsigned below(unsigned limit) {
    return limit == 0 ? 0 : static_cast<unsigned>(random()) % limit;
  }
  Vector place() { return {below(40) * 10.0 - 200, below(30) * 10.0 - 150}; }
  ViewObj* drawing() {
    const auto& all = view().get_objects();
    return all.empty() ? nullptr : all[below(static_cast<unsigned>(all.size()))].operator->();
  }
  Object* child_of(Object& parent) { return parent.child_at(below(parent.child_count())); }
  static std::vector<ViewLinkNode*> ends_of(ViewObj& object) {
    std::vector<ViewLinkNode*> ends;
    for (const auto* name : end_names) {
      if (auto* end = object.get_link_node(name)) ends.push_back(end);
    }
    const auto* point = dynamic_cast<Point*>(object.get_object());
    for (const auto* state : point ? point->states() : std::vector<PointState*>()) {
      if (auto* end = object.get_link_node("state:" + state->get_name().raw())) ends.push_back(end);
    }
    return ends;
  }
  ViewLinkNode* end() {
    auto* object = drawing();
    const auto ends = object ? ends_of(*object) : std::vector<ViewLinkNode*>();
    return ends.empty() ? nullptr : ends[below(static_cast<unsigned>(ends.size()))];
  }
  template <typename T>
  T* some(Section section) {
    return dynamic_cast<T*>(child_of(layout().get_toplevel(section)));
  }

  void add() {
    auto& points = layout().get_points();
    switch (below(7)) {
      case 0:
        return static_cast<void>(draw<ViewPoint>(*points.add(new Point), place()));
      case 1:
        return static_cast<void>(draw<ViewScissor>(*points.add(new Scissor), place()));
      case 2:
        return static_cast<void>(draw<ViewSignal>(*points.add(new Signal), place()));
      case 3:
        return static_cast<void>(
            draw<ViewCrossing>(*layout().get_blocks().add(new Crossing), place()));
      case 4:
        if (auto* zone = some<Zone>(Section::blocks)) draw<ViewLabel>(*zone, place());
        return;
      default:
        draw_zone(place());
    }
  }
  void shape() {
    auto* track = dynamic_cast<ViewTrack*>(drawing());
    if (!track) return;
    const auto segments = track->segments();
    const auto& segment = segments[below(static_cast<unsigned>(segments.size()))];
    auto* zone = dynamic_cast<ViewZone*>(track);
    switch (below(4)) {
      case 0:
        return track->make_curved(segment);
      case 1:
        return track->make_straight(segment);
      case 2:
        if (zone) zone->add_node(below(static_cast<unsigned>(segments.size())));
        return;
      default:
        if (zone) zone->delete_node(below(3));
    }
  }
  void drag() {
    auto* node = end();
    if (!node) return;
    const auto part = static_cast<ViewNode::Part>(below(3));
    const bool there = part == ViewNode::body ||
                       (part == ViewNode::left_handle ? node->has_left : node->has_right);
    if (there) node->drag(part, place());
  }
  void join() {
    auto* one = end();
    auto* other = end();
    if (!one || !other || one->get_object() == other->get_object()) return;
    if (one->can_connect(*other)) one->connect(*other);
  }
  void part() {
    auto* node = end();
    if (node && node->get_block_link()) node->get_block_link()->disconnect();
  }
  void alter_point() {
    auto* point = some<PointBase>(Section::points);
    if (!point) return;
    auto* state = dynamic_cast<PointState*>(child_of(*point));
    switch (below(7)) {
      case 0:
        return static_cast<void>(point->add_output());
      case 1:
        if (point->get_outputs().size() > 1) point->remove_output(1);
        return;
      case 2:
        if (!point->has_fixed_states()) point->add_state();
        return;
      case 3:
        if (state && state->get_deletable()) state->destroy();
        return;
      case 4:
        if (state) state->set_name("State " + std::to_string(below(9)));
        return;
      case 5:
        return point->get_outputs()[0]->set_type(static_cast<PointOutput::Type>(below(4)));
      default:
        if (state && !point->get_outputs().empty()) {
          state->set_setting(*point->get_outputs()[0].operator->(), PointStateOutput::on());
        }
    }
  }
  void alter_lok() {
    auto* lok = some<Lok>(Section::locomotives);
    if (!lok) return static_cast<void>(layout().get_loks().add(new Lok));
    auto& decoder = *lok->get_decoders()[0].operator->();
    switch (below(6)) {
      case 0:
        return static_cast<void>(lok->add_decoder());
      case 1:
        return lok->remove_decoder(below(3));
      case 2:
        return decoder.set_device(some<Device>(Section::devices));
      case 3:
        return decoder.set_reverse(!decoder.get_reverse());
      case 4:
        return static_cast<void>(lok->add(new Function(lok)));
      default:
        if (auto* function = child_of(*lok)) function->destroy();
    }
  }
  /// As by the menus of its lines.
  void alter_script() {
    auto* script = some<Script>(Section::scripts);
    if (!script || below(8) == 0) return static_cast<void>(layout().get_scripts().add(new Script));
    auto* line = static_cast<ScriptLine*>(script->get_command(below(5)));
    auto* condition = script->get_condition(below(4));
    switch (below(9)) {
      case 0:
        return script->set_while(below(2));
      case 1:
        return script->move_command(below(4), below(4));
      case 2:
        return script->move_condition(below(3), below(3));
      case 3:
        return script->remove_command(below(6));
      case 4:
        return script->remove_condition(below(5));
      case 5:
        return static_cast<void>(script->add_command(
            std::next(script_cmds().begin(), below(8))->second.create(*script)));
      case 6:
        return static_cast<void>(
            script->add_condition(std::next(script_events().begin(), below(2))->second.create()));
      case 7:
        if (condition) condition->set_or_flag(below(2));
        line = condition;
        [[fallthrough]];
      default:
        for (unsigned arg = 1; line && arg <= 4; ++arg) {
          if (line->get_arg_type(arg) != ScriptLine::ArgType::menu) continue;
          const auto choices = line->choices(arg);
          if (choices.empty()) continue;
          const auto& chosen = choices[below(static_cast<unsigned>(choices.size()))];
          if (chosen.choose) chosen.choose();
        }
    }
  }
  void rename() {
    if (auto* object = child_of(layout().get_toplevel(static_cast<Section>(below(6))))) {
      object->set_name("Name " + std::to_string(below(30)));
    }
  }
  void end_something() {
    const auto section = static_cast<Section>(below(6));
    if (auto* object = child_of(layout().get_toplevel(section))) object->destroy();
  }
  LokGroup* some_group() {
    auto* group = some<LokGroup>(Section::locomotives);
    return group && below(2) == 0 ? dynamic_cast<LokGroup*>(child_of(*group)) : group;
  }
  void move_something() {
    auto* group = some_group();
    if (!group && below(4) == 0) return static_cast<void>(layout().get_loks().add(new LokGroup));
    auto* from = group && below(2) == 0 ? static_cast<Object*>(group)
                                        : &layout().get_toplevel(static_cast<Section>(below(4)));
    auto* object = child_of(*from);
    if (!object) return;
    if (below(3) == 0 && dynamic_cast<Lok*>(object) && !object->empty()) {
      return object->child_at(0)->move_to(*object, below(3));
    }
    Object* const parents[] = {from, some_group(), &layout().get_loks()};
    auto* to = parents[below(3)];
    if (to && object->can_move_to(*to)) object->move_to(*to, below(5));
  }
  void edit() {
    auto* object = drawing();
    switch (below(20)) {
      case 0:
      case 1:
      case 2:
        return add();
      case 3:
        return shape();
      case 4:
        return drag();
      case 5:
      case 6:
        return join();
      case 7:
        return part();
      case 8:
        return alter_point();
      case 9:
        return alter_lok();
      case 10:
        return rename();
      case 11:
        return below(3) == 0 ? end_something() : void();
      case 12:
        return object ? object->move_to_bottom() : void();
      case 13:
      case 14:
        return move_something();
      case 15:
      case 16:
      case 17:
      case 18:
        return alter_script();
      default:
        return object && below(2) == 0 ? object->remove() : void();
    }
  }

  void expect_joins_agree(const char* when) {
    if (layout().get_views().empty()) return;
    for (const auto& object : view().get_objects()) {
      for (auto* node : ends_of(*object.operator->())) {
        const auto* partner = node->get_link();
        if (!partner) continue;
        ASSERT_EQ(partner->get_link(), node) << when;
        ASSERT_EQ(node->get_block_link()->get_partner(), partner->get_block_link()) << when;
        ASSERT_EQ(partner->get_block_link()->get_partner(), node->get_block_link()) << when;
      }
    }
  }

  std::mt19937 random;
};

TEST_F(RandomEdits, can_all_be_undone_and_redone_byte_by_byte) {
  for (unsigned seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE(seed);
    random.seed(seed);
    layout().new_document(true);
    steps.clear();
    // What the document was before and after each step that can be undone.
    std::vector<std::string> known{bytes()};
    std::size_t now = 0;
    for (int i = 0; i < 90; ++i) {
      const auto choice = below(10);
      if (choice == 0 && now > 0) {
        const auto name = next_undo();
        ASSERT_TRUE(undo());
        ASSERT_EQ(difference(bytes(), known[--now]), "") << name << ", " << i;
      } else if (choice == 1 && now + 1 < known.size()) {
        ASSERT_TRUE(redo());
        ASSERT_EQ(difference(bytes(), known[++now]), "") << i;
      } else {
        const auto* former = steps.next_undo();
        act([this] { edit(); });
        if (bytes() == known[now]) continue;
        const auto* newest = steps.next_undo();
        ASSERT_TRUE(newest) << i;
        // It may have been merged with the one before.
        if (newest != former) ++now;
        known.resize(now);
        known.push_back(bytes());
        EXPECT_FALSE(newest->get_name().empty());
      }
      expect_joins_agree("in between");
    }
    const auto all = now;
    while (now > 0) {
      const auto name = next_undo();
      ASSERT_TRUE(undo());
      ASSERT_EQ(difference(bytes(), known[--now]), "") << name;
      expect_joins_agree("after undo");
    }
    EXPECT_FALSE(undo());
    while (now < all) {
      ASSERT_TRUE(redo());
      ASSERT_EQ(difference(bytes(), known[++now]), "");
      expect_joins_agree("after redo");
    }
  }
}

// Steps of one window meet what another one has made of the same objects.
TEST_F(RandomEdits, of_two_windows_never_end_in_a_fault) {
  EditList other;
  for (unsigned seed = 1; seed <= 25; ++seed) {
    SCOPED_TRACE(seed);
    random.seed(seed);
    layout().new_document(true);
    steps.clear();
    other.clear();
    for (int i = 0; i < 120; ++i) {
      if (below(3) == 0) std::swap(steps, other);
      const auto choice = below(10);
      if (choice < 2) {
        undo();
      } else if (choice == 2) {
        redo();
      } else {
        act([this] { edit(); });
      }
      expect_joins_agree("in between");
      if (HasFatalFailure()) return;
    }
    ASSERT_TRUE(Layout::open_copy(DocumentText::whole(), true, "copy")) << get_status();
  }
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
