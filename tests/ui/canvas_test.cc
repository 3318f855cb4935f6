// The operating display, by events on its canvas.

#include <gdkmm/pixbuf.h>
#include <gmock/gmock.h>
#include <gtkmm/adjustment.h>
#include <gtkmm/comboboxtext.h>
#include <gtkmm/scrolledwindow.h>
#include <gtkmm/window.h>

#include <functional>

#include "core/global_options.h"
#include "diagram/view_crossing.h"
#include "diagram/view_label.h"
#include "diagram/view_link_node.h"
#include "diagram/view_point.h"
#include "diagram/view_scissor.h"
#include "diagram/view_signal.h"
#include "diagram/view_zone.h"
#include "tests/support/small_railway.h"
#include "tests/ui/keys.h"
#include "tests/ui/panel_of.h"
#include "tests/ui/pixels.h"
#include "tests/ui/widget_search.h"
#include "ui/canvas/runtime_view.h"
#include "ui/windows/view_pages.h"

namespace zemblar::test {
namespace {

constexpr unsigned black = 0;
/// Black track is darker and grey track is lighter, also where pixels are blended.
constexpr unsigned dark = 0x60;

std::vector<unsigned> pixels_of(const Glib::RefPtr<Gdk::Pixmap>& pixmap) {
  int width = 0;
  int height = 0;
  pixmap->get_size(width, height);
  return test::pixels_of(pixmap, 0, 0, width, height);
}

/// A zone, a point with a label and a signal over it, and one object of each other kind.
class CanvasTest : public SmallRailway {
 protected:
  CanvasTest() {
    put(*points, "common", {-20, 0});
    put(*points, way("Straight"), {60, 0});
    put(*points, way("Curved"), {60, 50});
    for (const auto& segment : points->segments()) points->make_straight(segment);
    aspect->set_anchor(Anchor::Top);
    at(west).occupy();
    lok = new_lok_in(west, "Express");
    signal->add_state();
    window.add(canvas);
    window.set_default_size(400, 300);
    window.show_all();
    handle_events();
  }

  template <typename T, typename Shown>
  T* show(Shown& shown, const Vector& place) {
    auto* object = new T(shown, place);
    view.add_object(object);
    return object;
  }
  static void put(ViewObj& object, const std::string& end, const Vector& place) {
    object.get_link_node(end)->drag(ViewNode::body, place);
  }
  [[nodiscard]] PointState* state(const char* name) const {
    return dynamic_cast<PointState*>(point->find_child(name));
  }
  [[nodiscard]] Vector common() const { return points->get_link_node("common")->pos; }
  static std::string way(const std::string& name) { return "state:" + name; }

  /// Through the toolkit's queue, as the window system's own events come.
  template <typename Event>
  void send(GdkEventType type, const Vector& place, const std::function<void(Event&)>& fill) {
    const auto event = make_event(type, canvas.get_window()->gobj());
    auto& sent = reinterpret_cast<Event&>(*event);
    sent.x = place.x;
    sent.y = place.y;
    fill(sent);
    gdk_event_put(event.get());
  }
  void button(GdkEventType type, const Vector& place, unsigned number = 1, unsigned held = 0) {
    send<GdkEventButton>(type, place, [number, held](auto& event) {
      event.button = number;
      event.state = held;
    });
  }
  void press(const Vector& place, unsigned held = 0) {
    button(GDK_BUTTON_PRESS, place, 1, held);
    button(GDK_BUTTON_RELEASE, place);
    handle_events();
  }
  void scroll(GdkScrollDirection direction, const Vector& place, int times) {
    for (int i = 0; i < times; ++i) {
      send<GdkEventScroll>(GDK_SCROLL, place,
                           [direction](auto& event) { event.direction = direction; });
    }
    handle_events();
  }
  void pan(const Vector& from, const Vector& to, unsigned held = GDK_BUTTON2_MASK) {
    button(GDK_BUTTON_PRESS, from, 2);
    send<GdkEventMotion>(GDK_MOTION_NOTIFY, to, [held](auto& event) { event.state = held; });
    button(GDK_BUTTON_RELEASE, to, 2);
    handle_events();
  }

  /// What a person sees there.
  unsigned colour_at(const Vector& place) {
    int width = 0;
    int height = 0;
    canvas.pixmap()->get_size(width, height);
    return pixels_of(canvas.pixmap())
        .at(static_cast<std::size_t>(std::lround(place.y) * width + std::lround(place.x)));
  }
  Vector on_canvas(const Vector& place) {
    canvas.update();
    return canvas.to_canvas(place);
  }
  /// The object, and its state if it is of one, for each of some places, spread over the canvas.
  using Hit = std::pair<const ViewObj*, const PointState*>;
  [[nodiscard]] std::vector<Hit> hits() {
    std::vector<Hit> found;
    for (int y = 0; y < canvas.get_height(); y += 3) {
      for (int x = 0; x < canvas.get_width(); x += 3) {
        const auto tag = canvas.hit(x, y);
        const auto* way = dynamic_cast<const ViewSwitch::StateTag*>(tag.get());
        found.emplace_back(tag ? tag->object : nullptr, way ? way->state : nullptr);
      }
    }
    return found;
  }

  View& view = *layout().get_views().add(new View);
  Zone* west = zone("West");
  Zone* east = zone("East");
  Point* point = layout().get_points().add(new Point);
  Scissor* scissor = layout().get_points().add(new Scissor);
  Signal* signal = layout().get_points().add(new Signal);
  Crossing* crossing = layout().get_blocks().add(new Crossing);
  ViewZone* zones = show<ViewZone>(*west, {-60, 0});
  ViewCrossing* cross = show<ViewCrossing>(*crossing, {-20, 10});
  ViewZone* other = show<ViewZone>(*east, {20, -20});
  ViewPoint* points = show<ViewPoint>(*point, {0, 0});
  ViewScissor* scissors = show<ViewScissor>(*scissor, {10, 20});
  ViewSignal* aspect = show<ViewSignal>(*signal, {-30, -20});
  ViewLabel* label = show<ViewLabel>(*west, {-60, 5});
  Lok* lok = nullptr;
  RuntimeView canvas{view};
  Gtk::Window window;
};

TEST_F(CanvasTest, what_is_clicked_is_what_is_seen_however_it_is_zoomed_and_panned) {
  scissors->remove();
  const std::vector<std::pair<const char*, std::function<void()>>> looks = {
      {"as it is", [] {}},
      {"zoomed in",
       [&] {
         scroll(GDK_SCROLL_UP, {300, 40}, 5);
       }},
      {"panned",
       [&] {
         pan({100, 100}, {61, 70});
       }},
      {"zoomed out",
       [&] {
         scroll(GDK_SCROLL_DOWN, {20, 250}, 13);
       }},
      {"panned back",
       [&] {
         pan({100, 100}, {180, 90});
       }},
      {"in another size",
       [&] {
         window.resize(520, 340);
         while (canvas.get_width() != 520) Gtk::Main::iteration();
         handle_events();
       }},
  };
  auto states = signal->states();
  std::size_t shown = 0;
  for (const auto& [look, change] : looks) {
    SCOPED_TRACE(look);
    change();
    for (const auto* name : {"Curved", "Straight"}) {
      const auto leg = on_canvas(common() * 0.3 + points->get_link_node(way(name))->pos * 0.7);
      EXPECT_GT(colour_at(leg) & 255, dark);
      press(leg);
      EXPECT_EQ(point->get_state(), state(name));
      EXPECT_LT(colour_at(leg) & 255, dark);
      press(leg);
      EXPECT_EQ(point->get_state(), state(name)) << "it lies there already";
    }
    // Its picture hangs from its place, and keeps its size.
    const auto head = on_canvas({-30, -20}) + Vector{0, 8};
    for (std::size_t i = 0; i < states.size(); ++i) {
      EXPECT_EQ(signal->get_state(), states.at(shown));
      const auto before = colour_at(head);
      press(head);
      EXPECT_NE(colour_at(head), before);
      shown = (shown + 1) % states.size();
    }
    press(on_canvas({-60, 0}));
    press({-5, 10000});
    EXPECT_EQ(signal->get_state(), states.at(shown));
  }
}

TEST_F(CanvasTest, a_protected_point_is_set_by_shift_alone) {
  GlobalOptions::get().set_points_protected(true);
  scissors->remove();
  point->set_lok(lok);
  const auto leg = on_canvas(common() * 0.3 + points->get_link_node(way("Curved"))->pos * 0.7);
  press(leg);
  EXPECT_EQ(point->get_state(), state("Straight"));
  EXPECT_EQ(get_status(), point->get_name() +
                              " stays as it is: Express is there. With Shift held it is set all "
                              "the same.");
  press(leg, GDK_SHIFT_MASK);
  EXPECT_EQ(point->get_state(), state("Curved"));
  while (canvas.get_marked() != points) press_key(window, GDK_KEY_Tab);
  press_key(window, GDK_KEY_space);
  EXPECT_EQ(point->get_state(), state("Curved"));
  press_key(window, GDK_KEY_space, GDK_SHIFT_MASK);
  EXPECT_EQ(point->get_state(), state("Straight"));

  const auto panel = panel_of(*point);
  auto& choice = get_widget<Gtk::ComboBoxText>(*panel);
  choice.set_active(1);
  EXPECT_EQ(choice.get_active_text(), "Straight");
  GlobalOptions::get().set_points_protected(false);
  choice.set_active(1);
  EXPECT_EQ(point->get_state(), state("Curved"));
}

TEST_F(CanvasTest, what_is_under_the_pointer_stays_there_and_returns) {
  const Vector pointer{310, 70};
  const auto home = canvas.to_view(pointer);
  const auto distance = [&] { return (on_canvas(home) - pointer).length(); };
  scroll(GDK_SCROLL_UP, pointer, 7);
  EXPECT_LT(distance(), 1e-6);
  scroll(GDK_SCROLL_DOWN, pointer, 15);
  EXPECT_LT(distance(), 1e-6);
  pan({10, 10}, {60, 30});
  EXPECT_NEAR(distance(), std::hypot(50, 20), 1e-6);
  pan({60, 30}, {10, 10}, 0);
  EXPECT_NEAR(distance(), std::hypot(50, 20), 1e-6) << "the button is not held any more";
  // As far as it goes, letters are still drawn.
  scroll(GDK_SCROLL_UP, on_canvas({-85, -7}), 200);
  EXPECT_THAT(pixels_of(canvas.pixmap()), testing::Contains(black));
}

TEST_F(CanvasTest, the_whole_drawing_comes_back_from_wherever_it_went) {
  auto* far = show<ViewZone>(*zone("Far"), {5000, -700});
  put(*far, "right", {5400, 900});
  const auto all_seen = [&] {
    canvas.show_whole();
    for (const auto& place : {common(), far->get_link_node("left")->pos, Vector{5400, 900}}) {
      const auto seen = on_canvas(place);
      if (seen.x < 0 || seen.y < 0 || seen.x > canvas.get_width() || seen.y > canvas.get_height()) {
        return false;
      }
    }
    return true;
  };
  EXPECT_TRUE(all_seen());
  const double zoom = canvas.get_zoom();
  EXPECT_LT(zoom, 0.1);
  scroll(GDK_SCROLL_UP, {10, 10}, 60);
  pan({10, 10}, {390, 290});
  EXPECT_TRUE(all_seen());
  EXPECT_NEAR(canvas.get_zoom(), zoom, zoom / 10);
  far->get_view()->remove_object(far);
  canvas.show_whole();
  EXPECT_EQ(canvas.get_zoom(), 1) << "no larger than it is";
  while (!view.get_objects().empty()) view.remove_object(view.get_objects().begin()->operator->());
  scroll(GDK_SCROLL_DOWN, {10, 10}, 5);
  canvas.show_whole();
  EXPECT_EQ(canvas.get_zoom(), 1);
  EXPECT_EQ(on_canvas({0, 0}), (Vector{canvas.get_width() / 2.0, canvas.get_height() / 2.0}));
}

TEST_F(CanvasTest, a_picture_lies_in_the_middle_and_goes_with_the_rest) {
  constexpr unsigned blue = 0x2040c0;
  const auto plan = folder.file("plan.png");
  const auto drawn = Gdk::Pixbuf::create(Gdk::COLORSPACE_RGB, false, 8, 120, 80);
  drawn->fill(blue << 8 | 255);
  drawn->save(plan, "png");
  view.set_image(plan);
  handle_events();
  EXPECT_EQ(canvas.size_request().width, 120);
  EXPECT_LT((on_canvas({60, 40}) - Vector{200, 150}).length(), 1e-6);
  const Vector pointer{310, 70};
  const auto home = canvas.to_view(pointer);
  for (const int steps : {0, 6, -10}) {
    scroll(steps < 0 ? GDK_SCROLL_DOWN : GDK_SCROLL_UP, pointer, std::abs(steps));
    EXPECT_LT((on_canvas(home) - pointer).length(), 1e-6);
    for (const double y : {6, 74}) {
      EXPECT_EQ(colour_at(on_canvas({114, y})), blue);
      EXPECT_EQ(colour_at(on_canvas({126, y})), 0xffffffu);
    }
    EXPECT_EQ(colour_at(on_canvas({90, 86})), 0xffffffu);
  }
}

TEST_F(CanvasTest, a_plan_that_is_larger_than_its_window_is_shown_whole) {
  const auto plan = folder.file("plan.png");
  Gdk::Pixbuf::create(Gdk::COLORSPACE_RGB, false, 8, 1600, 900)->save(plan, "png");
  view.set_image(plan);
  window.remove();
  auto* shown = Gtk::manage(new RuntimeView(view));
  auto* page = Gtk::manage(scrolled(shown));
  window.add(*page);
  window.show_all();
  window.resize(400, 300);
  handle_events();
  auto& frame = dynamic_cast<Gtk::ScrolledWindow&>(*page);
  frame.get_hadjustment()->set_value(700);
  frame.get_vadjustment()->set_value(200);
  handle_events();
  shown->show_whole();
  handle_events();
  for (const auto& corner : {Vector{0, 0}, Vector{1600, 900}}) {
    int x = 0;
    int y = 0;
    const auto place = shown->to_canvas(corner);
    shown->translate_coordinates(*page, static_cast<int>(place.x), static_cast<int>(place.y), x, y);
    EXPECT_TRUE(x > 0 && y > 0 && x < page->get_width() && y < page->get_height()) << x << " " << y;
  }
}

/// All views of the layout in a window, instead of what it had.
struct ShownPages : ViewPages {
  explicit ShownPages(Gtk::Window& window)
      : ViewPages([](View& shown) { return scrolled(Gtk::manage(new RuntimeView(shown))); },
                  Hidden::skip) {
    window.remove();
    window.add(*this);
    window.show_all();
    handle_events();
  }
};

TEST_F(CanvasTest, a_hint_shows_while_something_is_out_of_sight_and_fits_it) {
  auto* second = layout().get_views().add(new View);
  ShownPages pages(window);
  auto& hint = get_widget<Gtk::Button>(pages, "Not All Is in Sight: Fit (Ctrl+0)");
  EXPECT_FALSE(hint.get_mapped());
  auto* far = show<ViewZone>(*zone("Far"), {0, 0});
  handle_events();
  EXPECT_FALSE(hint.get_mapped());
  put(*far, "right", {400, 20});
  handle_events();
  ASSERT_TRUE(hint.get_mapped());
  EXPECT_EQ(pages.current_canvas()->get_zoom(), 1) << "nothing is zoomed unasked";
  hint.clicked();
  handle_events();
  EXPECT_FALSE(hint.get_mapped());
  pages.current_canvas()->zoom_in();
  pages.current_canvas()->zoom_in();
  handle_events();
  EXPECT_TRUE(hint.get_mapped());
  get_widget<Gtk::Notebook>(pages).set_current_page(1);
  handle_events();
  EXPECT_EQ(&pages.current_canvas()->get_view(), second);
  EXPECT_FALSE(hint.get_mapped()) << "the other page is empty";
  get_widget<Gtk::Notebook>(pages).set_current_page(0);
  handle_events();
  EXPECT_TRUE(hint.get_mapped());
  view.destroy();
  handle_events();
  EXPECT_FALSE(hint.get_mapped());
}

TEST_F(CanvasTest, a_double_click_acts_once) {
  const auto head = on_canvas({-30, -20}) + Vector{0, 8};
  button(GDK_BUTTON_PRESS, head);
  button(GDK_BUTTON_RELEASE, head);
  button(GDK_BUTTON_PRESS, head);
  button(GDK_2BUTTON_PRESS, head);
  button(GDK_BUTTON_RELEASE, head);
  handle_events();
  EXPECT_EQ(signal->get_state(), signal->states()[1]);
  press(head);
  EXPECT_EQ(signal->get_state(), signal->states()[2]) << "a click of its own";
}

TEST_F(CanvasTest, tab_goes_through_points_and_signals_and_leaves_behind_the_last) {
  EXPECT_EQ(canvas.get_marked(), nullptr) << "a window that has just opened";
  Gtk::Button before("before");
  Gtk::Button after("after");
  window.remove();
  Gtk::VBox rows;
  for (Gtk::Widget* row : std::initializer_list<Gtk::Widget*>{&before, &canvas, &after}) {
    rows.pack_start(*row, row == &canvas, true);
  }
  window.add(rows);
  window.show_all();
  handle_events();
  give_focus(window);
  before.grab_focus();
  auto* far = show<ViewSignal>(*layout().get_points().add(new Signal), {2000, 900});
  std::vector<ViewObj*> order{aspect, scissors, points, far};
  const auto window_size = Vector{400, 300};
  for (const unsigned back : {0U, unsigned{GDK_SHIFT_MASK}}) {
    for (auto* drawn : order) {
      press_key(window, GDK_KEY_Tab, back);
      ASSERT_EQ(canvas.get_marked(), drawn);
      const auto box = canvas.box_on_canvas(*drawn);
      EXPECT_TRUE(box.left > 0 && box.top > 0 && box.right < window_size.x &&
                  box.bottom < window_size.y);
      auto& clicked = dynamic_cast<PointBase&>(*drawn->get_object());
      const auto states = clicked.states();
      for (std::size_t i = 1; i <= states.size(); ++i) {
        press_key(window, i % 2 != 0 ? GDK_KEY_Return : GDK_KEY_space);
        EXPECT_EQ(clicked.get_state(), states[i % states.size()]);
      }
    }
    press_key(window, GDK_KEY_Tab, back);
    EXPECT_EQ(canvas.get_marked(), nullptr);
    EXPECT_EQ(window.get_focus(), back != 0 ? &before : &after);
    std::ranges::reverse(order);
  }
  press_key(window, GDK_KEY_Tab);
  const auto box = canvas.box_on_canvas(*aspect).whole();
  const Vector corner{box.left - 5, box.top - 5};
  const auto on_screen = [&](const Vector& place) {
    const auto pixel = Gdk::Pixbuf::create(
        Glib::RefPtr<Gdk::Drawable>(canvas.get_window()), canvas.get_window()->get_colormap(),
        static_cast<int>(place.x), static_cast<int>(place.y), 0, 0, 1, 1);
    const auto* bytes = pixel->get_pixels();
    return static_cast<unsigned>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]);
  };
  handle_events();
  EXPECT_NE(on_screen(corner), colour_at(corner)) << "a ring shows it";
  press_key(window, GDK_KEY_Escape);
  EXPECT_EQ(on_screen(corner), colour_at(corner));
  const auto* state = signal->get_state();
  press_key(window, GDK_KEY_Return);
  EXPECT_EQ(signal->get_state(), state) << "nothing is marked";
  press_key(window, GDK_KEY_Tab);
  aspect->remove();
  press_key(window, GDK_KEY_Return);
  EXPECT_EQ(canvas.get_marked(), nullptr);
  window.remove();
  rows.remove(canvas);
}

TEST_F(CanvasTest, what_is_painted_in_parts_is_as_if_it_were_painted_whole) {
  const std::vector<std::pair<const char*, std::function<void()>>> changes = {
      {"a point", [&] { point->set_state(state("Curved")); }},
      {"a point back", [&] { point->set_state(state("Straight")); }},
      {"a scissor point", [&] { scissor->set_state(scissor->states()[3]); }},
      {"a signal", [&] { signal->set_state(signal->states()[1]); }},
      {"something stands there", [&] { at(east).occupy(); }},
      {"it has gone", [&] { at(east).occupy(false); }},
      {"a speed", [&] { lok->set_actual_speed(50); }},
      {"no speed", [&] { lok->set_actual_speed(-1); }},
      {"a direction", [&] { lok->set_direction(Direction::Reverse); }},
      {"a longer name", [&] { lok->set_name("Express to the Coast"); }},
      {"all as before",
       [&] {
         for (auto* each : {static_cast<PointBase*>(point), static_cast<PointBase*>(scissor),
                            static_cast<PointBase*>(signal)}) {
           each->set_state(each->states()[0]);
         }
         lok->set_direction(Direction::Forwards);
         lok->set_name("Express");
       }},
  };
  for (const int steps : {0, -9, 15}) {
    scroll(steps < 0 ? GDK_SCROLL_DOWN : GDK_SCROLL_UP, {200, 150}, std::abs(steps));
    for (const auto& [what, change] : changes) {
      SCOPED_TRACE(testing::Message() << what << " at " << canvas.get_zoom());
      const auto before = canvas.repaints();
      const auto old = pixels_of(canvas.pixmap());
      change();
      canvas.update();
      const auto parts = pixels_of(canvas.pixmap());
      const auto part_hits = hits();
      EXPECT_EQ(canvas.repaints().whole, before.whole);
      EXPECT_EQ(canvas.repaints().parts, before.parts + 1);
      EXPECT_FALSE(parts == old);
      canvas.invalidate();
      handle_events();
      EXPECT_EQ(canvas.repaints().whole, before.whole + 1);
      EXPECT_TRUE(parts == pixels_of(canvas.pixmap()));
      EXPECT_TRUE(part_hits == hits());
    }
  }
}

TEST_F(CanvasTest, a_burst_is_one_repaint_and_an_expose_none) {
  const auto count = [&] { return canvas.repaints().whole + canvas.repaints().parts; };
  auto before = count();
  for (int i = 0; i < 1000; ++i) {
    point->set_state(state(i % 2 != 0 ? "Straight" : "Curved"));
    at(east).occupy(i % 2 == 0);
  }
  handle_events();
  EXPECT_EQ(count(), before + 1);
  canvas.queue_draw();
  handle_events();
  EXPECT_EQ(count(), before + 1);
}

TEST_F(CanvasTest, views_and_layouts_end_while_they_are_looked_at) {
  const auto path = folder.file("layout.zblt");
  layout().get_devices().destroy_children();
  folder.write("layout.zblt", layout().serialize());
  ShownPages pages(window);
  // Something waits to be drawn each time.
  const std::vector<std::function<void()>> ends = {
      [&] { view.destroy(); },
      [&] { layout().new_document(false); },
      [&] { ASSERT_TRUE(Layout::open(path)); },
      [&] { layout().get_blocks().destroy_children(); },
      [&] { ASSERT_TRUE(Layout::open(path)); },
  };
  for (const auto& end : ends) {
    for (auto* child : layout().get_points()) {
      auto& switched = dynamic_cast<PointBase&>(*child);
      switched.set_state(switched.states().back());
    }
    end();
    handle_events();
  }
  auto& shown = get_widget<RuntimeView>(pages);
  EXPECT_EQ(&shown.get_view(), *layout().get_views().begin());
  EXPECT_THAT(pixels_of(shown.pixmap()), testing::Contains(black));
}

}  // namespace
}  // namespace zemblar::test
