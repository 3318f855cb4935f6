// Drawing in the track editor, by events on its canvas.

#include <gmock/gmock.h>
#include <gtkmm/window.h>

#include <set>

#include "core/global_options.h"
#include "core/toplevel.h"
#include "diagram/view_class.h"
#include "diagram/view_zone.h"
#include "edit/edit_list.h"
#include "tests/support/layout_fixture.h"
#include "tests/ui/other_program.h"
#include "tests/ui/pixels.h"
#include "tests/ui/widget_search.h"
#include "ui/canvas/editor_view.h"

namespace zemblar::test {
namespace {

/// Before any grab: an event may be served late.
constexpr guint32 long_ago = 1;

class EditorTest : public LayoutTest {
 protected:
  EditorTest() {
    window.add(canvas);
    window.set_default_size(400, 300);
    window.show_all();
    handle_events();
    canvas.update();
  }

  /// At a place of the view, whose origin is in the middle of the canvas.
  template <typename Event>
  void send(GdkEventType type, const Vector& place, unsigned button, unsigned state) {
    const auto point = canvas.to_canvas(place);
    const auto event = make_event(type, canvas.get_window()->gobj());
    auto& sent = reinterpret_cast<Event&>(*event);
    sent.x = point.x;
    sent.y = point.y;
    sent.state = state;
    sent.time = long_ago;
    if constexpr (std::is_same_v<Event, GdkEventButton>) sent.button = button;
    canvas.event(event.get());
  }
  void press(const Vector& place, unsigned button = 1, unsigned state = 0) {
    send<GdkEventButton>(GDK_BUTTON_PRESS, place, button, state);
  }
  void release(const Vector& place, unsigned button = 1, unsigned state = 0) {
    send<GdkEventButton>(GDK_BUTTON_RELEASE, place, button, state);
    canvas.update();
  }
  void move(const Vector& place, unsigned state = GDK_BUTTON1_MASK) {
    send<GdkEventMotion>(GDK_MOTION_NOTIFY, place, 0, state);
  }
  void drag(const Vector& from, const Vector& to, unsigned state = 0) {
    press(from, 1, state);
    move((from + to) * 0.5, state | GDK_BUTTON1_MASK);
    move(to, state | GDK_BUTTON1_MASK);
    release(to, 1, state | GDK_BUTTON1_MASK);
  }
  ViewZone* zone_at(const Vector& place) {
    return show<ViewZone>(*layout().get_blocks().add(new Zone), place);
  }
  template <typename T>
  T* show(zemblar::Object& shown, const Vector& place) {
    auto* object = new T(dynamic_cast<Zone&>(shown), place);
    view.add_object(object);
    canvas.update();
    return object;
  }
  bool key(guint value, unsigned state = 0, GdkEventType type = GDK_KEY_PRESS) {
    const auto event = make_event(type, canvas.get_window()->gobj());
    event->key.keyval = value;
    event->key.state = state;
    return canvas.event(event.get());
  }
  /// What the window shows in a square round a place of the view.
  std::vector<unsigned> pixels_round(const Vector& place, int half) {
    const auto at = canvas.to_canvas(place);
    return pixels_of(canvas.get_window(), static_cast<int>(at.x) - half,
                     static_cast<int>(at.y) - half, 2 * half, 2 * half);
  }
  static ViewLinkNode& end(ViewObj* object, const char* name) {
    return *object->get_link_node(name);
  }

  View& view = *layout().get_views().add(new View);
  EditorView canvas{view};
  Gtk::Window window;
};

TEST_F(EditorTest, drags_what_is_under_the_pointer_and_joins_with_ctrl) {
  auto* a = zone_at({-100, 0});
  auto* b = zone_at({50, 0});
  press({-100, 0});
  release({-100, 0});
  EXPECT_EQ(canvas.get_selected(), a);
  EXPECT_EQ(end(a, "left").pos, (Vector{-140, 0})) << "a click moves nothing";
  drag({-100, 0}, {-100, 30});
  EXPECT_EQ(end(a, "left").pos, (Vector{-140, 30})) << "the whole";
  drag({-60, 30}, {-30, 60});
  EXPECT_EQ(end(a, "right").pos, (Vector{-30, 60})) << "one end";
  EXPECT_EQ(end(a, "left").pos, (Vector{-140, 30}));

  drag({-30, 60}, {10, 0});
  EXPECT_EQ(end(a, "right").get_link(), nullptr) << "without Ctrl";
  drag({10, 0}, {-30, 60});
  // Dropped on nothing, on its own other end, and on another object's.
  drag({-30, 60}, {-20, 80}, GDK_CONTROL_MASK);
  drag({-20, 80}, {-140, 30}, GDK_CONTROL_MASK);
  EXPECT_EQ(end(a, "right").get_link(), nullptr);
  // Both are there now, and it does not matter which is on top.
  drag({-140, 30}, {10, 0}, GDK_CONTROL_MASK);
  ASSERT_NE(end(b, "left").get_link(), nullptr);
  EXPECT_EQ(end(b, "left").get_link()->get_object(), a);
  EXPECT_TRUE(end(b, "left").get_block_link()->is_connected());
  // A second picture of an end is the same end.
  auto* again = show<ViewZone>(*b->get_object(), {50, 90});
  drag({90, 90}, {90, 0}, GDK_CONTROL_MASK);
  EXPECT_EQ(end(again, "right").get_link(), nullptr);

  press({300, 300});
  release({300, 300});
  EXPECT_EQ(canvas.get_selected(), nullptr);
}

TEST_F(EditorTest, closes_a_ring_and_joins_new_pictures_of_blocks_that_are_partners) {
  auto* a = zone_at({-100, 0});
  auto* b = zone_at({50, 100});
  drag({-60, 0}, {10, 100}, GDK_CONTROL_MASK);
  drag({90, 100}, {-140, 0}, GDK_CONTROL_MASK);
  ASSERT_EQ(end(b, "right").get_link(), &end(a, "left")) << "its neighbour floats with the drag";
  EXPECT_EQ(end(b, "right").get_block_link()->get_partner(), end(a, "left").get_block_link());

  auto* a2 = show<ViewZone>(*a->get_object(), {-100, -90});
  auto* b2 = show<ViewZone>(*b->get_object(), {80, -60});
  auto& right = end(a2, "right");
  EditList steps;
  EditJournal::get().begin([&](auto step) { steps.record(std::move(step)); });
  drag({-60, -90}, {40, -60}, GDK_CONTROL_MASK);
  EditJournal::get().end();
  EXPECT_EQ(right.get_link(), &end(b2, "left"));
  EXPECT_EQ(right.get_block_link()->get_partner(), end(b, "left").get_block_link());
  ASSERT_EQ(steps.next_undo()->get_name(), "Join “Zone 1”");
  const EditJournal::Pause pause;
  steps.undo();
  EXPECT_EQ(end(view.get_objects().at(2).operator->(), "right").get_link(), nullptr);
  EXPECT_TRUE(end(a, "right").get_block_link()->is_connected()) << "joined in the first picture";
}

TEST_F(EditorTest, marks_what_a_drop_would_join_and_says_why_it_joins_nothing) {
  zone_at({-100, 0});
  zone_at({50, 0});
  auto* c = zone_at({50, 80});
  drag({-60, 0}, {10, 0}, GDK_CONTROL_MASK);
  show<ViewZone>(*c->get_object(), {50, -80});
  // What the window shows round the free end of the second zone, with the pointer on it.
  const auto seen = [&](unsigned state) {
    move({90, 1}, state | GDK_BUTTON1_MASK);
    canvas.update();
    handle_events();
    return pixels_round({90, 0}, 16);
  };
  press({90, 80});
  move({70, 60});
  const auto plain = seen(0);
  const auto marked = seen(GDK_CONTROL_MASK);
  EXPECT_FALSE(marked == plain);
  EXPECT_TRUE(seen(0) == plain) << "Ctrl is let go";
  key(GDK_KEY_Control_L);
  handle_events();
  EXPECT_TRUE(pixels_round({90, 0}, 16) == marked) << "held again, and the pointer rests";
  move({90, 80});
  release({90, 80});

  const struct {
    Vector from, to;
    const char* reason;
  } drops[] = {
      {{90, 80}, {150, 120}, "no end of another piece"},
      {{150, 120}, {10, 80}, "both ends belong to “Zone 3”"},
      {{10, 80}, {10, 0}, "the end of “Zone 1” is joined to “Zone 2” already"},
      {{152, 122}, {90, -80}, "both are pictures of the same end of “Zone 3”"},
      {{10, 0}, {10, -80}, "the end of “Zone 2” is joined to “Zone 1” already"},
      {{-65, 0}, {-65, -30}, "drag an end"},
  };
  for (const auto& [from, to, reason] : drops) {
    clear_status();
    drag(from, to, GDK_CONTROL_MASK);
    EXPECT_THAT(get_status().raw(), testing::HasSubstr(reason)) << to.x << " " << to.y;
  }
  EXPECT_EQ(end(c->get_view()->get_objects().at(2).operator->(), "right").pos, (Vector{150, 120}))
      << "back, as two ends on one place look joined";
}

TEST_F(EditorTest, meets_what_is_nearly_hit_at_any_zoom_and_where_the_grid_puts_it) {
  auto* a = zone_at({-100, 0});
  auto* b = zone_at({60, 0});
  GlobalOptions::get().set_grid(20);
  drag({-60, 0}, {27, -7}, GDK_CONTROL_MASK);
  EXPECT_EQ(end(a, "right").get_link(), &end(b, "left")) << "on one place";
  for (int i = 0; i < 8; ++i) canvas.zoom_out();
  canvas.update();
  const double pixel = 1 / canvas.get_zoom();
  press({60, 5 * pixel});
  release({60, 5 * pixel});
  EXPECT_EQ(canvas.get_selected(), b) << "beside the track";
  auto* above = zone_at({100, 7 * pixel});
  press({100, 7 * pixel});
  release({100, 7 * pixel});
  EXPECT_EQ(canvas.get_selected(), above) << "exactly there, though an end is near";
  above->remove();
  drag({100 + 5 * pixel, 4 * pixel}, {140, 60});
  EXPECT_NE(end(b, "right").pos, (Vector{100, 0})) << "the end, not the piece";
  EXPECT_EQ(end(b, "left").pos, (Vector{20, 0}));
  GlobalOptions::get().set_grid(GlobalOptions::usual_grid);
}

TEST_F(EditorTest, placing_goes_on_under_the_wheel_and_ends_when_the_pointer_is_taken_away) {
  int placed = 0;
  int cancelled = 0;
  canvas.signal_placed().connect([&] { ++placed; });
  const auto place = [&] {
    canvas.place(ViewClass::find("!view-zone")->draw(ViewClass::find("!view-zone")->make_object()),
                 [&] { ++cancelled; });
  };
  const auto move_pointer = [&](int x, int y) {
    canvas.get_display()->warp_pointer(canvas.get_screen(), x, y);
    canvas.get_display()->sync();
    handle_events();
  };
  int left = 0;
  int top = 0;
  canvas.get_window()->get_origin(left, top);
  move_pointer(left + 700, top + 500);
  place();
  handle_events();
  EXPECT_TRUE(OtherProgram().has_pointer()) << "for whatever a click is for there";
  release({700, 500});
  EXPECT_EQ(placed, 0);
  move_pointer(left + 20, top + 20);
  EXPECT_FALSE(OtherProgram().has_pointer());
  move_pointer(left + 700, top + 500);
  EXPECT_TRUE(OtherProgram().has_pointer());
  move_pointer(left + 20, top + 20);
  press({10, 10}, 2);
  release({10, 10}, 2);
  move({20, 30}, 0);
  press({20, 30});
  release({20, 30});
  EXPECT_EQ(placed, 1);
  EXPECT_TRUE(OtherProgram().has_pointer());
  EXPECT_EQ(end(view.get_objects().back().operator->(), "left").pos, (Vector{-20, 30}));
  place();
  canvas.event(make_event(GDK_GRAB_BROKEN, canvas.get_window()->gobj()).get());
  EXPECT_EQ(cancelled, 1);
  EXPECT_EQ(view.get_objects().size(), 1u);
  place();
  canvas.hide();  // as when another page is shown
  EXPECT_EQ(cancelled, 2);
  EXPECT_EQ(view.get_objects().size(), 1u);
}

TEST_F(EditorTest, places_what_is_new_or_takes_it_away_again) {
  int placed = 0;
  int cancelled = 0;
  canvas.signal_placed().connect([&] { ++placed; });
  const auto place = [&] {
    auto& made = ViewClass::find("!view-scissor")->make_object();
    canvas.place(ViewClass::find("!view-scissor")->draw(made), [&] { ++cancelled; });
    return view.get_objects().back().operator->();
  };
  auto* first = place();
  move({20, 30}, 0);
  press({20, 30});
  release({20, 30});
  EXPECT_EQ(placed, 1);
  EXPECT_EQ(end(first, "top-left").pos, (Vector{-10, 20}));
  EXPECT_EQ(canvas.get_selected(), first);

  place();
  release({0, 0}, 3);
  EXPECT_EQ(cancelled, 1);
  EXPECT_EQ(view.get_objects().size(), 1u);
  // What it shows ends while it follows the pointer.
  place()->get_object()->destroy();
  EXPECT_EQ(view.get_objects().size(), 1u);
  move({50, 50}, 0);
  press({50, 50});
  release({50, 50});
  EXPECT_EQ(placed, 1);
  first->get_object()->destroy();
  EXPECT_EQ(canvas.get_selected(), nullptr);
}

TEST_F(EditorTest, brings_a_drawing_back_that_was_moved_out_of_sight) {
  auto* zone = zone_at({3000, -4000});
  canvas.show_whole();
  canvas.update();
  const auto seen = canvas.to_canvas(end(zone, "left").pos);
  EXPECT_LT(std::abs(seen.x - canvas.get_width() / 2.0), canvas.get_width() / 2.0);
  EXPECT_LT(std::abs(seen.y - canvas.get_height() / 2.0), canvas.get_height() / 2.0);
  EXPECT_EQ(canvas.get_zoom(), 1);
}

TEST_F(EditorTest, keeps_what_is_dragged_or_placed_on_the_grid_unless_alt_is_held) {
  auto* a = zone_at({-100, 0});
  drag({-100, 0}, {-83, 26});
  EXPECT_EQ(end(a, "left").pos, (Vector{-120, 30})) << "the whole";
  EXPECT_EQ(end(a, "right").pos, (Vector{-40, 30}));
  drag({-40, 30}, {-26, 57});
  EXPECT_EQ(end(a, "right").pos, (Vector{-30, 60})) << "an end";
  a->make_curved(a->segments()[0]);
  canvas.update();
  drag(end(a, "right").left_point(), {-72, 88});
  EXPECT_LT((end(a, "right").left_point() - Vector{-70, 90}).length(), 0.01) << "a handle";
  EXPECT_EQ(end(a, "right").left, 50);
  drag(end(a, "right").left_point(), {-72, 112});
  EXPECT_EQ(end(a, "right").left, 64.03);
  drag({-30, 60}, {-16.125, 47.0625}, GDK_MOD1_MASK);
  EXPECT_EQ(end(a, "right").pos, (Vector{-16.13, 47.06})) << "with Alt";

  auto& options = GlobalOptions::get();
  for (const auto& [step, place] : {std::pair{20u, Vector{20, -20}}, std::pair{0u, Vector{13, -16}},
                                    std::pair{10u, Vector{10, -20}}}) {
    options.set_grid(step);
    auto& point = ViewClass::find("!view-point")->make_object();
    canvas.place(ViewClass::find("!view-point")->draw(point), {});
    const auto common = Vector{13, -16} + Vector{100.0 / 3, 20.0 / 3};
    move(common, 0);
    press(common);
    release(common);
    EXPECT_EQ(end(canvas.get_selected(), "common").pos, place) << step;
    point.destroy();
  }
}

TEST_F(EditorTest, aligns_what_is_selected_and_takes_it_back) {
  auto* a = zone_at({-100, 0});
  auto* b = zone_at({50, 0});
  end(b, "left").connect(end(a, "right"));
  end(a, "left").drag(ViewNode::body, {-138, 14.4});
  end(a, "right").drag(ViewNode::body, {-53.5, 15.6});
  b->make_curved(b->segments()[0]);
  end(b, "right").drag(ViewNode::left_handle, end(b, "right").pos - Vector{40, 3});
  b->make_straight(b->segments()[0]);
  b->make_curved(b->segments()[0]);
  const auto before = layout().serialize();
  canvas.align();
  EXPECT_THAT(get_status().raw(), testing::HasSubstr("Nothing is selected"));
  EditList steps;
  const auto align = [&](ViewObj* object) {
    EditJournal::get().begin([&](auto step) { steps.record(std::move(step)); });
    canvas.select(object);
    canvas.align();
    EditJournal::get().end();
  };
  align(a);
  EXPECT_EQ(end(a, "left").pos, (Vector{-140, 10}));
  EXPECT_EQ(end(a, "right").pos, (Vector{-50, 10})) << "level from its left end";
  EXPECT_EQ(end(b, "left").pos, (Vector{-50, 10})) << "what is joined goes along";
  EXPECT_EQ(end(b, "left").dir, (Vector{1, 0}));
  align(b);
  EXPECT_EQ(end(b, "right").pos, (Vector{90, 0}));
  EXPECT_EQ(end(b, "right").dir, (Vector{1, 0})) << "nearly level before";
  EXPECT_EQ(steps.next_undo()->get_name(), "Align “Zone 2”");
  const EditJournal::Pause pause;
  while (steps.undo()) {
  }
  EXPECT_EQ(layout().serialize(), before);
  auto* stump = zone_at({200, 200});
  end(stump, "left").drag(ViewNode::body, {201, 201});
  end(stump, "right").drag(ViewNode::body, {203, 201});
  align(stump);
  EXPECT_EQ(end(stump, "left").pos, (Vector{201, 201})) << "both would lie at one place";
}

TEST_F(EditorTest, does_by_keys_what_the_pointer_does) {
  auto* a = zone_at({-100, 0});
  auto* b = zone_at({50, 40});
  const auto origin = canvas.to_canvas({0, 0});
  EXPECT_TRUE(key(GDK_KEY_Left)) << "nothing is selected";
  canvas.update();
  EXPECT_GT(canvas.to_canvas({0, 0}).x, origin.x) << "the page moves";
  EXPECT_TRUE(key(GDK_KEY_Tab));
  EXPECT_EQ(canvas.get_selected(), a);
  key(GDK_KEY_Down);
  key(GDK_KEY_Right, GDK_SHIFT_MASK);
  EXPECT_EQ(end(a, "left").pos, (Vector{-139, 10}));
  EXPECT_EQ(end(a, "right").pos, (Vector{-59, 10}));
  // Stretch, left end, right end; and round.
  for (int i = 0; i < 2; ++i) key(GDK_KEY_space, GDK_SHIFT_MASK);
  key(GDK_KEY_Up);
  EXPECT_EQ(end(a, "left").pos, (Vector{-139, 0}));
  EXPECT_EQ(end(a, "right").pos, (Vector{-59, 10}));
  key(GDK_KEY_space);
  key(GDK_KEY_j);
  ASSERT_NE(end(a, "right").get_link(), nullptr);
  EXPECT_EQ(end(a, "right").get_link()->get_object(), b) << "not the other end of its own";
  EXPECT_EQ(end(a, "right").pos, end(b, "left").pos);
  EXPECT_EQ(get_status(), "Joined “Zone 1” with “Zone 2”.");
  EXPECT_EQ(canvas.get_accessible()->get_description(),
            "Zone 1, end joined with “Zone 2” (10, 40)");
  key(GDK_KEY_j);
  EXPECT_THAT(get_status().raw(), testing::HasSubstr("joined to “Zone 2” already"));

  EXPECT_TRUE(key(GDK_KEY_Tab));
  EXPECT_EQ(canvas.get_selected(), b);
  EXPECT_FALSE(key(GDK_KEY_Tab)) << "on to the next widget";
  std::set<std::vector<unsigned>> stops;
  const auto look = [&] {
    canvas.update();
    handle_events();
    stops.insert(pixels_round({50, 40}, 80));
  };
  for (int i = 0; i < 4; ++i) look(), key(GDK_KEY_space);
  EXPECT_EQ(stops.size(), 4U) << "the whole, a stretch, two ends";
  key(GDK_KEY_space);
  key(GDK_KEY_Escape);
  look();
  EXPECT_EQ(stops.size(), 4U) << "the whole again";
  auto* far = zone_at({5000, 40});
  key(GDK_KEY_Tab);
  EXPECT_EQ(canvas.get_selected(), far);
  canvas.update();
  EXPECT_LT(canvas.to_canvas({5000, 40}).x, canvas.get_width()) << "it comes into sight";
  far->remove();
  canvas.select(b);
  EXPECT_TRUE(key(GDK_KEY_ISO_Left_Tab, GDK_SHIFT_MASK));
  EXPECT_EQ(canvas.get_selected(), a);

  canvas.place(ViewClass::find("!view-zone")->draw(ViewClass::find("!view-zone")->make_object()),
               {});
  auto* placed = canvas.get_selected();
  const auto from = end(placed, "left").pos;
  key(GDK_KEY_Left);
  key(GDK_KEY_Return);
  EXPECT_EQ(end(placed, "left").pos, (Vector{from.x - 10, from.y}));
  key(GDK_KEY_Delete);
  EXPECT_EQ(view.get_objects().size(), 2u);
}

TEST_F(EditorTest, takes_away_what_was_made_for_the_tool_when_its_view_ends) {
  auto* other = layout().get_views().add(new View);
  auto page = std::make_unique<EditorView>(*other);
  other->signal_deleted().connect([&] { page.reset(); });
  window.remove();
  window.add(*page);
  page->show();
  auto& made = ViewClass::find("!view-zone")->make_object();
  page->place(ViewClass::find("!view-zone")->draw(made), [&] { made.destroy(); });
  other->destroy();
  EXPECT_TRUE(layout().get_blocks().empty());
}

}  // namespace
}  // namespace zemblar::test
