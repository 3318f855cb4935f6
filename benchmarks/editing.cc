// What it costs to draw in a large diagram, and to take it back.

#include "benchmarks/diagram_scene.h"
#include "benchmarks/layout_scene.h"
#include "benchmarks/ratio.h"
#include "edit/edit_journal.h"
#include "edit/edit_list.h"
#include "ui/canvas/editor_view.h"

namespace zemblar::bench {
namespace {

/// A person at the canvas, whose pointer is somewhere.
class Hand {
 public:
  explicit Hand(EditorView& canvas) : canvas_(canvas) {}

  void press(const Vector& place) { send<GdkEventButton>(GDK_BUTTON_PRESS, place); }
  void move(const Vector& place) { send<GdkEventMotion>(GDK_MOTION_NOTIFY, place); }

 private:
  template <typename Event>
  void send(GdkEventType type, const Vector& place) {
    const auto point = canvas_.to_canvas(place);
    auto* event = gdk_event_new(type);
    auto& sent = reinterpret_cast<Event&>(*event);
    sent.window = GDK_WINDOW(g_object_ref(canvas_.get_window()->gobj()));
    sent.x = point.x;
    sent.y = point.y;
    sent.state = GDK_BUTTON1_MASK;
    if constexpr (std::is_same_v<Event, GdkEventButton>) sent.button = 1;
    canvas_.event(event);
    gdk_event_free(event);
  }

  EditorView& canvas_;
};

const Figure motion("editing: one motion of a drag among 2,000 objects, to a full repaint", "ms",
                    0.1, [](Effort effort) {
                      static Gtk::Main toolkit(0, nullptr);
                      struct Screen {
                        explicit Screen(Effort effort)
                            : scene(effort.count(2000)), window(scene.view()) {}
                        DiagramScene scene;
                        CanvasWindow<EditorView> window;
                      };
                      auto screen = std::make_shared<Screen>(effort);
                      auto& object = *screen->scene.view().get_objects().front().operator->();
                      const auto start = object.get_link_node("left")->pos;
                      auto hand = std::make_shared<Hand>(screen->window.canvas);
                      auto step = std::make_shared<int>(0);
                      return [=] {
                        auto& window = screen->window;
                        Sample sample;
                        if (*step == 0) {
                          sample.floor = milliseconds([&] { window.repaint(); });
                          hand->press(start);
                          hand->move(start + Vector{20, 20});
                          window.settle();
                        } else {
                          sample.floor = milliseconds([&] { window.repaint(); });
                        }
                        ++*step;
                        sample.figure = milliseconds([&] {
                          hand->move(start + Vector{20.0 + *step % 7, 20});
                          window.settle();
                        });
                        return sample;
                      };
                    });

/// The time of one undo and one redo of a rename in a document of so many objects.
double undo_time(std::size_t objects) {
  fill_with_loks(objects);
  EditList steps;
  auto& journal = EditJournal::get();
  auto* lok = Layout::get().get_loks().child_at(0);
  for (int i = 0; i < 20; ++i) {
    journal.begin([&](std::unique_ptr<EditStep> step) { steps.record(std::move(step)); });
    i % 2 == 0 ? lok->set_name("Lok " + std::to_string(i))
               : dynamic_cast<Lok&>(*lok).set_top_speed(100 + i);
    journal.end();
  }
  return milliseconds([&] {
    const EditJournal::Pause pause;
    while (steps.undo()) {
    }
    while (steps.redo()) {
    }
  });
}

const Figure undo("editing: undo and redo among 10,000 objects, to 100", "ms", 1.5,
                  [](Effort effort) {
                    return [count = effort.count(10000)] {
                      Sample sample;
                      sample.floor = undo_time(100);
                      sample.figure = undo_time(count);
                      return sample;
                    };
                  });

}  // namespace
}  // namespace zemblar::bench
