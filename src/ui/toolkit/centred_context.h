#pragma once

#include <cairomm/context.h>
#include <gdk/gdk.h>
#include <gtkmm/widget.h>

namespace zemblar {

/// A cairo context for a widget that has no window of its own, clipped to the exposed area. Its
/// origin is the top left corner of a square of `size` pixels that is centred in the widget.
[[nodiscard]] inline Cairo::RefPtr<Cairo::Context> centred_context(Gtk::Widget& widget,
                                                                   const GdkEventExpose& event,
                                                                   int size) {
  const auto cr = widget.get_window()->create_cairo_context();
  cr->rectangle(event.area.x, event.area.y, event.area.width, event.area.height);
  cr->clip();
  const auto room = widget.get_allocation();
  cr->translate(room.get_x() + (room.get_width() - size) / 2,
                room.get_y() + (room.get_height() - size) / 2);
  return cr;
}

}  // namespace zemblar
