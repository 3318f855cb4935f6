#pragma once

#include "ui/diagram_canvas.h"

namespace zemblar {

/// The canvas of the track editor: shows a view plainly, with its nodes.
class EditorView : public DiagramCanvas {
 public:
  explicit EditorView(View& view);

 protected:
  void draw_object(const Context& context, ViewObj& object) override;
  void draw_tags(const Context& context, ViewObj& object, SelectionTable& table) override;
  [[nodiscard]] PixelBox box_of(const Context& context, ViewObj& object) override;
};

}  // namespace zemblar
