// What it costs to keep a large diagram on the screen.

#include <gdkmm/general.h>

#include "benchmarks/diagram_scene.h"
#include "benchmarks/layout_scene.h"
#include "benchmarks/ratio.h"

namespace zemblar::bench {
namespace {

constexpr std::size_t object_count = 2000;

/// A scene and its canvas, for as long as a figure is measured.
struct Screen {
  explicit Screen(Effort effort) : scene(effort.count(object_count)), window(scene.view()) {}

  DiagramScene scene;
  SceneWindow window;
};

std::shared_ptr<Screen> open_screen(Effort effort) {
  static Gtk::Main toolkit(0, nullptr);
  return std::make_shared<Screen>(effort);
}

Cairo::RefPtr<Cairo::ImageSurface> make_surface() {
  return Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, DiagramScene::width,
                                     DiagramScene::height);
}

/// The strokes of which the picture consists, ready made, with nothing else to find out.
class BareStrokes {
 public:
  explicit BareStrokes(const DiagramScene& scene) : background_(scene.view().get_colour()) {
    recorder_ = Cairo::Context::create(make_surface());
    for (const auto& object : scene.view().get_objects()) add(*object.operator->());
  }

  void paint(const Cairo::RefPtr<Cairo::ImageSurface>& surface) const {
    const auto context = Cairo::Context::create(surface);
    Gdk::Cairo::set_source_color(context, background_);
    context->paint();
    context->set_matrix(DiagramScene::matrix());
    context->set_line_join(Cairo::LINE_JOIN_ROUND);
    for (const auto& stroke : strokes_) {
      context->set_source_rgb(stroke.grey, stroke.grey, stroke.grey);
      context->set_line_width(stroke.width);
      context->append_path(*stroke.path);
      context->stroke();
    }
  }

 private:
  struct Stroke {
    std::unique_ptr<Cairo::Path> path;
    double width;
    double grey;
  };

  void add(ViewObj& object) {
    if (auto* points = dynamic_cast<ViewSwitch*>(&object)) {
      add_switch(*points);
    } else {
      add_tracks(dynamic_cast<ViewTrack&>(object).segments(), true, 0);
    }
  }

  void add_switch(ViewSwitch& points) {
    auto ways = points.segments();
    const std::vector<ViewSegment> set{ways.front()};
    ways.erase(ways.begin());
    add_tracks(ways, true, 0.5);
    add_tracks(set, false, 0);
    for (const auto* name : {"common", "top-left", "top-right", "bottom-left", "bottom-right"}) {
      if (const auto* end = points.get_link_node(name)) add_tick(*end);
    }
    const auto* point = dynamic_cast<Point*>(points.get_object());
    if (!point) return;
    for (const auto* state : point->states()) {
      add_tick(*points.get_link_node("state:" + state->get_name().raw()));
    }
  }

  void add_tracks(const std::vector<ViewSegment>& segments, bool halo, double grey) {
    for (const auto width : {TrackPaths::halo_width, TrackPaths::rail_width}) {
      const bool is_halo = width == TrackPaths::halo_width;
      if (is_halo && !halo) continue;
      for (const auto& segment : segments) {
        trace(recorder_, TrackPath{{segment.start}, {segment.end, *segment.straight}});
        keep(width, is_halo ? 1 : grey);
      }
    }
  }

  void add_tick(const ViewNode& end) {
    const auto across = end.dir.normal() * 6;
    recorder_->move_to(end.pos.x - across.x, end.pos.y - across.y);
    recorder_->line_to(end.pos.x + across.x, end.pos.y + across.y);
    keep(2, 0);
  }

  void keep(double width, double grey) {
    strokes_.push_back({std::unique_ptr<Cairo::Path>(recorder_->copy_path()), width, grey});
    recorder_->begin_new_path();
  }

  Gdk::Color background_;
  Cairo::RefPtr<Cairo::Context> recorder_;
  std::vector<Stroke> strokes_;
};

std::vector<std::uint32_t> pixels_of(const Cairo::RefPtr<Cairo::ImageSurface>& surface) {
  surface->flush();
  std::vector<std::uint32_t> pixels;
  for (int y = 0; y < surface->get_height(); ++y) {
    const auto* row =
        reinterpret_cast<const std::uint32_t*>(surface->get_data() + y * surface->get_stride());
    for (int x = 0; x < surface->get_width(); ++x) pixels.push_back(row[x] & 0xFFFFFF);
  }
  return pixels;
}

const Figure repaint("diagram: a full repaint on the window, to its strokes alone", "ms", 1.3,
                     [](Effort effort) {
                       auto screen = open_screen(effort);
                       auto strokes = std::make_shared<BareStrokes>(screen->scene);
                       auto surface = make_surface();
                       strokes->paint(surface);
                       if (pixels_of(surface) != screen->window.pixels()) {
                         throw std::logic_error("the floor strokes another picture");
                       }
                       return [screen, strokes, surface] {
                         Sample sample;
                         sample.floor = milliseconds([&] { strokes->paint(surface); });
                         sample.figure = milliseconds([&] { screen->window.repaint(); });
                         return sample;
                       };
                     });

const Figure tags("diagram: the picture of tags, to the visible one", "ms", 0.25,
                  [](Effort effort) {
                    auto screen = open_screen(effort);
                    return [screen, surface = make_surface()] {
                      const auto& objects = screen->scene.view().get_objects();
                      const auto matrix = DiagramScene::matrix();
                      Sample sample;
                      sample.floor = milliseconds([&] {
                        const auto context = Cairo::Context::create(surface);
                        context->set_source_rgb(1, 1, 1);
                        context->paint();
                        context->set_matrix(matrix);
                        for (const auto& object : objects) object->draw_runtime(context);
                      });
                      TagImage image;
                      sample.figure = milliseconds([&] {
                        image.begin(DiagramScene::width, DiagramScene::height, matrix);
                        for (const auto& object : objects) {
                          object->draw_runtime_tags(image.context(), image.table());
                        }
                      });
                      return sample;
                    };
                  });

void throw_point(const Point& point) {
  const auto states = point.states();
  const_cast<Point&>(point).set_state(point.get_state() == states[0] ? states[1] : states[0]);
}

const Figure change("diagram: one point thrown on the window, to a full repaint", "ms", 0.05,
                    [](Effort effort) {
                      auto screen = open_screen(effort);
                      return [screen, next = std::size_t{0}]() mutable {
                        auto& window = screen->window;
                        const auto& points = screen->scene.points();
                        const auto& point = *points[next++ * 7 % points.size()];
                        Sample sample;
                        sample.figure = milliseconds([&] {
                          throw_point(point);
                          window.settle();
                        });
                        const auto changed = window.pixels();
                        sample.floor = milliseconds([&] { window.repaint(); });
                        if (window.pixels() != changed) {
                          throw std::logic_error("a part was painted otherwise than the whole");
                        }
                        return sample;
                      };
                    });

const Figure burst("diagram: 1,000 changes at once, to a full repaint", "ms", 1.3,
                   [](Effort effort) {
                     auto screen = open_screen(effort);
                     const auto count = effort.count(1000);
                     return [screen, count] {
                       auto& window = screen->window;
                       const auto& points = screen->scene.points();
                       Sample sample;
                       sample.floor = milliseconds([&] { window.repaint(); });
                       const auto before = window.canvas.repaints();
                       sample.figure = milliseconds([&] {
                         for (std::size_t i = 0; i < count; ++i) {
                           throw_point(*points[i % points.size()]);
                         }
                         window.settle();
                       });
                       const auto& after = window.canvas.repaints();
                       if (after.whole + after.parts != before.whole + before.parts + 1) {
                         throw std::logic_error("more than one repaint");
                       }
                       return sample;
                     };
                   });

const Figure expose("diagram: an expose without a change, to a copy of the pixmap", "us", 1.3,
                    [](Effort effort) {
                      auto screen = open_screen(effort);
                      const auto count = effort.count(20);
                      return [screen, count] {
                        auto& canvas = screen->window.canvas;
                        const auto window = canvas.get_window();
                        const auto gc = canvas.get_style()->get_black_gc();
                        auto sample = versus(
                            count,
                            [&] {
                              canvas.queue_draw();
                              screen->window.settle();
                            },
                            [&] {
                              window->draw_drawable(gc, canvas.pixmap(), 0, 0, 0, 0,
                                                    DiagramScene::width, DiagramScene::height);
                              gdk_flush();
                            });
                        sample.figure /= 1000;
                        sample.floor /= 1000;
                        return sample;
                      };
                    });

const Figure hit("diagram: what is under the pointer, to reading one pixel", "ns", 5.0,
                 [](Effort effort) {
                   auto screen = open_screen(effort);
                   const auto count = effort.count(100000);
                   return [screen, surface = make_surface(), count] {
                     auto& canvas = screen->window.canvas;
                     int x = 0;
                     const auto next = [&x] { return x = (x + 7) % DiagramScene::width; };
                     return versus(
                         count, [&] { keep(canvas.hit(next(), 200)); },
                         [&] {
                           const auto* row = surface->get_data() + 200 * surface->get_stride();
                           keep(reinterpret_cast<const std::uint32_t*>(row)[next()]);
                         });
                   };
                 });

}  // namespace
}  // namespace zemblar::bench
