// Displays draw again only what says that it has changed, and only where it says that it can be.

#include <gdkmm/pixbuf.h>
#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <map>
#include <set>

#include "diagram/view_menu.h"
#include "tests/diagram/diagram_scene.h"

namespace zemblar::test {
namespace {

/// One object alone, on nothing.
class Alone {
 public:
  Alone(ViewObj& object, double zoom) {
    const auto context = Cairo::Context::create(surface_);
    context->translate(size / 2.0, size / 2.0);
    context->scale(zoom, zoom);
    box_ = object.runtime_box(context);
    object.draw_runtime(context);
    surface_->flush();
  }
  [[nodiscard]] std::string bytes() const {
    return {reinterpret_cast<const char*>(surface_->get_data()),
            static_cast<std::size_t>(surface_->get_stride()) * size};
  }
  /// How many pixels were drawn where nobody would look for them.
  [[nodiscard]] int strays() const {
    const auto box = box_.whole();
    int count = 0;
    for (int y = 0; y < size; ++y) {
      for (int x = 0; x < size; ++x) {
        unsigned pixel = 0;
        std::memcpy(&pixel, surface_->get_data() + y * surface_->get_stride() + x * 4, 4);
        const bool inside = x >= box.left && x < box.right && y >= box.top && y < box.bottom;
        count += pixel != 0 && !inside;
      }
    }
    return count;
  }

 private:
  static constexpr int size = 600;
  Cairo::RefPtr<Cairo::ImageSurface> surface_ =
      Cairo::ImageSurface::create(Cairo::FORMAT_ARGB32, size, size);
  PixelBox box_;
};

/// One object of each kind, some of them joined, a locomotive in the first zone.
class RedrawTest : public DiagramScene {
 protected:
  RedrawTest() {
    at(west).occupy();
    lok = new_lok_in(west, "Express");
    end(*points, "common").connect(end(*a, "right"));
    end(*b, "left").connect(end(*points, straight_end));
    b->make_curved(b->segments()[0]);
    end(*b, "left").refresh();
  }
  std::map<ViewObj*, std::string> pictures() const {
    std::map<ViewObj*, std::string> all;
    for (const auto& object : view->get_objects()) {
      auto* shown = object.operator->();
      all[shown] = Alone(*shown, 1).bytes();
    }
    return all;
  }
  void turn_first_zone(double angle) {
    const Vector half{40 * std::cos(angle), 40 * std::sin(angle)};
    const auto middle = end(*a, "right").pos - half;
    end(*a, "left").drag(ViewNode::body, middle - half);
  }

  Zone* west = zone("West");
  Zone* east = zone("East");
  Point* turnout = point();
  Scissor* slip = scissor();
  Signal* lamp = signal();
  ViewZone* a = show<ViewZone>(*west, {0, 0});
  ViewZone* b = show<ViewZone>(*east, {100, 0});
  ViewPoint* points = show<ViewPoint>(*turnout, {60, 0});
  ViewScissor* scissors = show<ViewScissor>(*slip, {0, 100});
  ViewSignal* aspect = show<ViewSignal>(*lamp, {-100, 0});
  ViewLabel* label = show<ViewLabel>(*west, {-100, -100});
  ViewCrossing* cross = show<ViewCrossing>(*crossing(), {0, 200});
  Lok* lok = nullptr;
  const std::string straight_end = "state:" + turnout->states()[0]->get_name().raw();
};

TEST_F(RedrawTest, whatever_looks_different_has_said_so) {
  PointState* third = nullptr;
  const TemporaryFolder pictures_folder;
  const auto plate = pictures_folder.file("plate.png");
  Gdk::Pixbuf::create(Gdk::COLORSPACE_RGB, false, 8, 40, 60)->save(plate, "png");
  const auto drag = [](ViewObj& object, const std::string& name, ViewNode::Part part, Vector to) {
    return [&end = end(object, name), part, to] { end.drag(part, to); };
  };
  const std::vector<std::pair<const char*, std::function<void()>>> steps = {
      {"a zone's end", drag(*a, "left", ViewNode::body, {-40, 60})},
      {"an end that is joined", drag(*a, "right", ViewNode::body, {45, 5})},
      {"a handle", drag(*b, "left", ViewNode::right_handle, {120, 40})},
      {"a leg", drag(*points, straight_end, ViewNode::body, {90, 20})},
      {"a leg that bends", [&] { points->make_curved(points->segments()[0]); }},
      {"a handle of the partner", drag(*points, straight_end, ViewNode::left_handle, {70, -30})},
      {"a leg that is straight", [&] { points->make_straight(points->segments()[0]); }},
      {"nodes apart", [&] { end(*points, "common").disconnect(); }},
      {"turned alone", [&] { turn_first_zone(1); }},
      {"nodes joined", [&] { end(*a, "right").connect(end(*points, "common")); }},
      {"blocks apart", [&] { west->right.disconnect(); }},
      {"a new node", [&] { b->add_node(0); }},
      {"one node less", [&] { b->delete_node(0); }},
      {"the point", [&] { turnout->set_state(turnout->states()[1]); }},
      {"a state more", [&] { third = &turnout->add_state(); }},
      {"a state less", [&] { third->destroy(); }},
      {"the scissor point", [&] { slip->set_state(slip->states()[2]); }},
      {"one of its states", [&] { slip->states()[0]->destroy(); }},
      {"the signal", [&] { lamp->set_state(lamp->states()[1]); }},
      {"one of its states", [&] { lamp->states()[0]->destroy(); }},
      {"its picture", [&] { dynamic_cast<SignalState&>(*lamp->states()[0]).set_image(plate); }},
      {"its angle", [&] { aspect->set_angle(30); }},
      {"its anchor", [&] { aspect->set_anchor(Anchor::TopLeft); }},
      {"heading", [&] { lok->set_direction(Direction::Reverse); }},
      {"speed", [&] { lok->set_actual_speed(50); }},
      {"name", [&] { lok->set_name("A very long name"); }},
      {"alignment", [&] { label->set_align(Anchor::BottomRight); }},
      {"no locomotive", [&] { lok->destroy(); }},
      {"something", [&] { at(east).occupy(); }},
      {"a partner gone", [&] { points->remove(); }},
  };
  std::set<ViewObj*> told;
  const ScopedConnection listening(
      view->signal_changed().connect([&] { told.insert(view->changed_object()); }));
  auto before = pictures();
  for (const auto& [what, step] : steps) {
    told.clear();
    step();
    const auto now = pictures();
    EXPECT_NE(now, before) << what << " changes nothing";
    for (const auto& [object, bytes] : now) {
      const auto silent = !told.contains(object) && !told.contains(nullptr);
      EXPECT_FALSE(silent && before[object] != bytes) << what << ": " << typeid(*object).name();
    }
    before = now;
  }
}

TEST_F(RedrawTest, nothing_is_drawn_where_nobody_would_look_for_it) {
  lok->set_name("Jodler");
  a->make_curved(a->segments()[0]);
  end(*b, "left").drag(ViewNode::right_handle, {80, 90});
  for (const double zoom : {0.3, 1.0, 2.2, 6.0}) {
    for (const double angle : {0.0, 0.4, M_PI / 4, 2.0}) {
      turn_first_zone(angle);
      aspect->set_angle(angle * 180 / M_PI);
      for (const auto& object : view->get_objects()) {
        auto& shown = *object.operator->();
        EXPECT_EQ(Alone(shown, zoom).strays(), 0) << typeid(shown).name() << zoom << angle;
      }
    }
  }
}

TEST_F(RedrawTest, an_object_that_is_removed_lets_go_even_while_somebody_holds_it) {
  points->reference();
  const Glib::RefPtr<ViewPoint> held(points);
  int done = 0;
  const auto action = while_drawn(*points, [&] { ++done; });
  action();
  points->remove();
  action();
  EXPECT_EQ(done, 1);
  EXPECT_EQ(end(*a, "right").get_link(), nullptr);
  EXPECT_TRUE(west->right.is_connected()) << "blocks stay joined";
  // The ends that were joined to it are written as open ones.
  layout().get_devices().destroy_children();
  EXPECT_THAT(layout().serialize(), testing::Not(testing::HasSubstr("link: ")));
}

}  // namespace
}  // namespace zemblar::test
