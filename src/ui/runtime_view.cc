#include "ui/runtime_view.h"

#include "core/i18n.h"

namespace zemblar {
namespace {

/// The toolkit tells of a double click by a second press, and only then that it was a double one.
bool is_second_press() {
  GdkEvent* next = gdk_event_peek();
  if (!next) return false;
  const bool repeated = next->type == GDK_2BUTTON_PRESS || next->type == GDK_3BUTTON_PRESS;
  gdk_event_free(next);
  return repeated;
}

}  // namespace

RuntimeView::RuntimeView(View& view)
    : DiagramCanvas(view, _("Nothing has been drawn here yet.\n"
                            "The track editor is in the menu View.")) {}

void RuntimeView::draw_object(const Context& context, ViewObj& object) {
  object.draw_runtime(context);
}

void RuntimeView::draw_tags(const Context& context, ViewObj& object, SelectionTable& table) {
  object.draw_runtime_tags(context, table);
}

PixelBox RuntimeView::box_of(const Context& context, ViewObj& object) {
  return object.runtime_box(context);
}

bool RuntimeView::on_button_press_event(GdkEventButton* event) {
  if (event->button != 1) return DiagramCanvas::on_button_press_event(event);
  if (event->type != GDK_BUTTON_PRESS || is_second_press()) return true;
  update();
  if (const auto tag = hit(event->x, event->y)) tag->object->click(*tag);
  return true;
}

}  // namespace zemblar
