#pragma once

#include "ui/canvas/diagram_canvas.h"
#include "ui/canvas/switch_accessible.h"

namespace zemblar {

/// The operating display: shows a view as the railway is now, and turns clicks into actions.
///
/// By keys, Tab goes from switch to switch, a word for points, scissor points and signals here. A
/// ring shows which one is marked, Return and Space click it, and behind the last one Tab leaves
/// the canvas. Assistive technology finds each switch as a child of the canvas that can be pressed.
class RuntimeView : public DiagramCanvas {
 public:
  explicit RuntimeView(View& view);
  ~RuntimeView() override;

  /// Null for none.
  [[nodiscard]] ViewObj* get_marked() const { return marked_; }
  /// Moves the ring, and what is marked into sight.
  void mark(ViewObj* drawn);

 protected:
  void draw_object(const Context& context, ViewObj& object) override;
  void draw_tags(const Context& context, ViewObj& object, SelectionTable& table) override;
  [[nodiscard]] PixelBox box_of(const Context& context, ViewObj& object) override;
  bool on_button_press_event(GdkEventButton* event) override;
  bool on_focus(Gtk::DirectionType direction) override;
  bool on_focus_in_event(GdkEventFocus* event) override;
  bool on_focus_out_event(GdkEventFocus* event) override;
  bool on_key_press_event(GdkEventKey* event) override;
  bool on_expose_event(GdkEventExpose* event) override;
  Glib::RefPtr<Atk::Object> on_get_accessible() override;

 private:
  bool mark_next(bool back);
  void press_marked();
  void draw_ring(const GdkEventExpose& event);

  ViewObj* marked_ = nullptr;
  SwitchAccessibles accessibles_{*this};
  ScopedConnection renamed_;
  ScopedConnection changed_;
  ScopedConnection added_;
  ScopedConnection removed_;
};

}  // namespace zemblar
