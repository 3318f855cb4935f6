// Edits at random, undone and redone, to the last byte.

#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "core/document_text.h"
#include "diagram/view_crossing.h"
#include "diagram/view_label.h"
#include "diagram/view_link_node.h"
#include "diagram/view_point.h"
#include "diagram/view_scissor.h"
#include "diagram/view_signal.h"
#include "diagram/view_zone.h"
#include "edit/edit_list.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"
#include "scripts/script.h"
#include "scripts/script_registry.h"
#include "scripts/script_ui.h"
#include "tests/edit/edit_fixture.h"
#include "tests/track/link_names.h"
#include "track/scissor.h"
#include "track/signal.h"

namespace zemblar::test {
namespace {

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
    for (const auto& name : link_names(dynamic_cast<Block&>(*object.get_object()))) {
      if (auto* end = object.get_link_node(name)) ends.push_back(end);
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

  void one_of(std::initializer_list<std::function<void()>> deeds) {
    deeds.begin()[below(static_cast<unsigned>(deeds.size()))]();
  }

  void add() {
    auto& points = layout().get_points();
    one_of({
        [&] { draw<ViewPoint>(*points.add(new Point), place()); },
        [&] { draw<ViewScissor>(*points.add(new Scissor), place()); },
        [&] { draw<ViewSignal>(*points.add(new Signal), place()); },
        [&] { draw<ViewCrossing>(*layout().get_blocks().add(new Crossing), place()); },
        [&] { label(some<Zone>(Section::blocks)); },
        [&] { draw_zone(place()); },
        [&] { draw_zone(place()); },
    });
  }
  void label(Zone* zone) {
    if (zone) draw<ViewLabel>(*zone, place());
  }
  void shape() {
    auto* track = dynamic_cast<ViewTrack*>(drawing());
    if (!track) return;
    const auto segments = track->segments();
    const auto number = below(static_cast<unsigned>(segments.size()));
    auto* zone = dynamic_cast<ViewZone*>(track);
    one_of({
        [&] { track->make_curved(segments[number]); },
        [&] { track->make_straight(segments[number]); },
        [&] { zone ? zone->add_node(number) : void(); },
        [&] { zone ? zone->delete_node(below(3)) : void(); },
    });
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
    const auto& outputs = point->get_outputs();
    auto* state = dynamic_cast<PointState*>(child_of(*point));
    const auto thrown = PointStateOutput::on();
    one_of({
        [&] { point->add_output(); },
        [&] { outputs.size() > 1 ? point->remove_output(1) : void(); },
        [&] { point->has_fixed_states() ? void() : void(point->add_state()); },
        [&] { state && state->get_deletable() ? state->destroy() : void(); },
        [&] { state ? state->set_name("State " + std::to_string(below(9))) : void(); },
        [&] { outputs[0]->set_type(static_cast<PointOutput::Type>(below(4))); },
        [&] { state ? state->set_setting(*outputs[0].operator->(), thrown) : void(); },
    });
  }
  void alter_lok() {
    auto* lok = some<Lok>(Section::locomotives);
    if (!lok) return static_cast<void>(layout().get_loks().add(new Lok));
    auto& decoder = *lok->get_decoders()[0].operator->();
    auto* function = child_of(*lok);
    one_of({
        [&] { lok->add_decoder(); },
        [&] { lok->remove_decoder(below(3)); },
        [&] { decoder.set_device(some<Device>(Section::devices)); },
        [&] { decoder.set_reverse(!decoder.get_reverse()); },
        [&] { lok->add(new Function(lok)); },
        [&] { function ? function->destroy() : void(); },
    });
  }
  void alter_script() {
    auto* script = some<Script>(Section::scripts);
    if (!script || below(8) == 0) return static_cast<void>(layout().get_scripts().add(new Script));
    const auto command =
        std::next(script_cmds().begin(), below(static_cast<unsigned>(script_cmds().size())));
    const auto event =
        std::next(script_events().begin(), below(static_cast<unsigned>(script_events().size())));
    auto* condition = script->get_condition(below(4));
    one_of({
        [&] { script->set_while(below(2)); },
        [&] { script->move_command(below(4), below(4)); },
        [&] { script->move_condition(below(3), below(3)); },
        [&] { script->remove_command(below(6)); },
        [&] { script->remove_condition(below(5)); },
        [&] { script->add_command(command->second.create(*script)); },
        [&] { script->add_condition(event->second.create()); },
        [&] { condition ? condition->set_or_flag(below(2)), choose(condition) : void(); },
        [&] { choose(script->get_command(below(5))); },
    });
  }
  /// As by the menus of the line.
  void choose(ScriptLine* line) {
    for (unsigned arg = 1; line && arg <= 4; ++arg) {
      if (line->get_arg_type(arg) != ScriptLine::ArgType::menu) continue;
      const auto choices = line->choices(arg);
      if (choices.empty()) continue;
      const auto& chosen = choices[below(static_cast<unsigned>(choices.size()))];
      if (chosen.choose) chosen.choose();
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
    const auto move_to_bottom = [&] { object ? object->move_to_bottom() : void(); };
    const auto remove = [&] { object&& below(2) == 0 ? object->remove() : void(); };
    const std::pair<unsigned, std::function<void()>> deeds[] = {
        {3, [&] { add(); }},
        {1, [&] { shape(); }},
        {1, [&] { drag(); }},
        {2, [&] { join(); }},
        {1, [&] { part(); }},
        {1, [&] { alter_point(); }},
        {1, [&] { alter_lok(); }},
        {1, [&] { rename(); }},
        {1, [&] { below(3) == 0 ? end_something() : void(); }},
        {1, move_to_bottom},
        {2, [&] { move_something(); }},
        {4, [&] { alter_script(); }},
        {1, remove},
    };
    auto left = below(20);
    const auto* deed = deeds;
    while (left >= deed->first) left -= deed++->first;
    deed->second();
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

}  // namespace
}  // namespace zemblar::test
