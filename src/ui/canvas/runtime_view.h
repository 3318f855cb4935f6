#pragma once

#include "ui/canvas/diagram_canvas.h"
#include "ui/canvas/switch_accessible.h"

namespace zemblar {

/// The operating display: shows a view with the present state of the railway, and turns clicks into
/// actions.
///
/// A switch is a point, a scissor point or a signal in the view. Tab goes from switch to switch and
/// leaves the canvas after the last one. A ring shows the marked switch; Return and Space click it.
/// For assistive technology each switch is a child of the canvas that can be pressed.
class RuntimeView : public DiagramCanvas {
 public:
  explicit RuntimeView(View& view);
  ~RuntimeView() override;

  /// The marked switch, or null.
  [[nodiscard]] ViewObj* get_marked() const { return marked_; }
  /// Marks a switch, or none for null, and scrolls it into the visible part.
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
  void press_marked(bool insists);
  void draw_ring(const GdkEventExpose& event);

  ViewObj* marked_ = nullptr;
  SwitchAccessibles accessibles_{*this};
  ScopedConnection renamed_;
  ScopedConnection changed_;
  ScopedConnection added_;
  ScopedConnection removed_;
};

}  // namespace zemblar
