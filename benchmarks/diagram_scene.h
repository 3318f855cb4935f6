#pragma once

#include <gtkmm/main.h>
#include <gtkmm/window.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include "core/layout.h"
#include "diagram/view_crossing.h"
#include "diagram/view_link_node.h"
#include "diagram/view_point.h"
#include "diagram/view_scissor.h"
#include "diagram/view_zone.h"
#include "ui/canvas/runtime_view.h"

namespace zemblar::bench {

/// A station of two hundred tracks on a canvas of 1920 by 1080 pixels: rows of zones, straight and
/// bent, points, scissor points and crossings, each object in a cell of its own.
class DiagramScene {
 public:
  static constexpr int width = 1920;
  static constexpr int height = 1080;

  explicit DiagramScene(std::size_t objects) {
    Layout::get().new_document(false);
    view_ = Layout::get().get_views().add(new View);
    for (std::size_t i = 0; i < objects; ++i) add(i);
  }

  [[nodiscard]] View& view() const { return *view_; }
  [[nodiscard]] const std::vector<Point*>& points() const { return points_; }
  /// From the view to the canvas.
  [[nodiscard]] static Cairo::Matrix matrix() {
    return Cairo::translation_matrix(width * 0.5, height * 0.5);
  }

 private:
  static constexpr std::size_t columns = 50;
  static constexpr double cell_width = 38;
  static constexpr double cell_height = 26;

  static Vector place_of(std::size_t i) {
    return {static_cast<double>(i % columns) * cell_width - width * 0.5 + cell_width * 0.5,
            static_cast<double>(i / columns) * cell_height - height * 0.5 + cell_height};
  }

  /// An end of an object, at the border of its cell.
  static void put(ViewObj& object, const std::string& name, const Vector& place, Vector offset) {
    auto* node = object.get_link_node(name);
    if (!node) throw std::logic_error("no end " + name);
    node->drag(ViewNode::body, place + offset);
  }

  void add(std::size_t i) {
    constexpr std::size_t pattern = 20;
    const auto kind = i % pattern;
    const auto place = place_of(i);
    if (kind == pattern - 1) return add_crossing(place);
    if (kind == pattern - 2) return add_scissor(place);
    if (kind % 5 == 4) return add_point(place);
    add_zone(place, kind % 2 != 0);
  }

  void add_zone(const Vector& place, bool bent) {
    auto* zone = Layout::get().get_blocks().add(new Zone);
    auto* shown = new ViewZone(*zone, place);
    view_->add_object(shown);
    const double rise = bent ? 8 : 0;
    put(*shown, "left", place, {-half_length, rise});
    put(*shown, "right", place, {half_length, -rise});
    if (!bent) return;
    shown->make_curved(shown->segments().front());
    for (const auto* end : {"left", "right"}) shown->get_link_node(end)->dir = {1, 0};
  }

  void add_point(const Vector& place) {
    auto* point = Layout::get().get_points().add(new Point);
    points_.push_back(point);
    auto* shown = new ViewPoint(*point, place);
    view_->add_object(shown);
    put(*shown, "common", place, {-half_length, 0});
    double drop = 0;
    for (const auto* state : point->states()) {
      put(*shown, "state:" + state->get_name().raw(), place, {half_length, drop});
      drop += 8;
    }
    shown->make_curved(shown->segments().back());
  }

  void add_scissor(const Vector& place) {
    auto* scissor = Layout::get().get_points().add(new Scissor);
    auto* shown = new ViewScissor(*scissor, place);
    view_->add_object(shown);
    put_corners(*shown, place);
  }

  void add_crossing(const Vector& place) {
    auto* crossing = Layout::get().get_blocks().add(new Crossing);
    auto* shown = new ViewCrossing(*crossing, place);
    view_->add_object(shown);
    put_corners(*shown, place);
  }

  static void put_corners(ViewObj& shown, const Vector& place) {
    put(shown, "top-left", place, {-half_length, -8});
    put(shown, "top-right", place, {half_length, -8});
    put(shown, "bottom-left", place, {-half_length, 8});
    put(shown, "bottom-right", place, {half_length, 8});
  }

  static constexpr double half_length = cell_width / 2;

  View* view_;
  std::vector<Point*> points_;
};

/// The canvas of a scene, on the screen.
template <typename Canvas>
class CanvasWindow {
 public:
  explicit CanvasWindow(View& view) : canvas(view) {
    canvas.set_size_request(DiagramScene::width, DiagramScene::height);
    window_.add(canvas);
    window_.show_all();
    while (Gtk::Main::events_pending()) Gtk::Main::iteration();
    settle();
    if (canvas.get_width() != DiagramScene::width) throw std::runtime_error("no room for a canvas");
  }

  /// What waits to be drawn is drawn and has come to the window.
  void settle() {
    canvas.get_window()->process_updates(true);
    gdk_flush();
  }
  /// The whole picture anew.
  void repaint() {
    canvas.invalidate();
    settle();
  }
  [[nodiscard]] std::vector<std::uint32_t> pixels() {
    return pixels_of(*canvas.pixmap().operator->());
  }

 private:
  static std::vector<std::uint32_t> pixels_of(Gdk::Pixmap& pixmap) {
    auto* image = gdk_drawable_get_image(GDK_DRAWABLE(pixmap.gobj()), 0, 0, DiagramScene::width,
                                         DiagramScene::height);
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < DiagramScene::height; ++y) {
      for (int x = 0; x < DiagramScene::width; ++x) {
        pixels.push_back(gdk_image_get_pixel(image, x, y) & 0xFFFFFF);
      }
    }
    g_object_unref(image);
    return pixels;
  }

  Gtk::Window window_{Gtk::WINDOW_POPUP};  // no window manager has a say

 public:
  Canvas canvas;
};

using SceneWindow = CanvasWindow<RuntimeView>;

}  // namespace zemblar::bench
