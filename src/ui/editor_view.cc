#include "ui/editor_view.h"

#include "core/i18n.h"

namespace zemblar {

EditorView::EditorView(View& view) : DiagramCanvas(view, _("This view is empty.")) {}

void EditorView::draw_object(const Context& context, ViewObj& object) {
  object.draw(context, false);
}

void EditorView::draw_tags(const Context& context, ViewObj& object, SelectionTable& table) {
  object.draw_tags(context, false, table);
}

PixelBox EditorView::box_of(const Context& context, ViewObj& object) {
  return object.runtime_box(context);
}

}  // namespace zemblar
