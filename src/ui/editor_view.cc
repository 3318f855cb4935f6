#include "ui/editor_view.h"

#include "core/i18n.h"

namespace zemblar {

EditorView::EditorView(View& view) : DiagramCanvas(view, _("This view is empty.")) {
  object_removed_ = view.signal_object_removed().connect([this](ViewObj* object) {
    tag_.reset();
    if (object == selected_) select(nullptr);
  });
}

void EditorView::select(ViewObj* object) {
  if (object == selected_) return;
  selected_ = object;
  invalidate();
  signal_selected_changed_.emit();
}

void EditorView::draw_object(const Context& context, ViewObj& object) {
  object.draw(context, &object == selected_);
}

void EditorView::draw_tags(const Context& context, ViewObj& object, SelectionTable& table) {
  object.draw_tags(context, &object == selected_, table);
}

// Handles may reach anywhere.
PixelBox EditorView::box_of(const Context& /*context*/, ViewObj& /*object*/) {
  return {0, 0, static_cast<double>(get_width()), static_cast<double>(get_height())};
}

bool EditorView::on_button_press_event(GdkEventButton* event) {
  if (event->type != GDK_BUTTON_PRESS || event->button == 2) {
    return DiagramCanvas::on_button_press_event(event);
  }
  update();
  const auto tag = hit(event->x, event->y);
  if (event->button == 1) select(tag ? tag->object : nullptr);
  if (event->button == 3) tag_ = tag;
  return true;
}

bool EditorView::on_button_release_event(GdkEventButton* event) {
  if (event->button != 3) return DiagramCanvas::on_button_release_event(event);
  if (const auto tag = std::exchange(tag_, {})) tag->object->show_menu(*tag, event->time);
  return true;
}

}  // namespace zemblar
