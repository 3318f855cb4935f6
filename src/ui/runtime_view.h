#pragma once

#include "ui/diagram_canvas.h"

namespace zemblar {

/// The operating display: shows a view as the railway is now, and turns clicks into actions.
class RuntimeView : public DiagramCanvas {
 public:
  explicit RuntimeView(View& view);

 protected:
  void draw_object(const Context& context, ViewObj& object) override;
  void draw_tags(const Context& context, ViewObj& object, SelectionTable& table) override;
  [[nodiscard]] PixelBox box_of(const Context& context, ViewObj& object) override;
  bool on_button_press_event(GdkEventButton* event) override;
};

}  // namespace zemblar
