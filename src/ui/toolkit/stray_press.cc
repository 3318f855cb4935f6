#include "ui/toolkit/stray_press.h"

#include <gdk/gdk.h>
#include <gdk/gdkx.h>

namespace zemblar {
namespace {

bool is_outside(const XButtonEvent& press) {
  auto* object = gdk_xid_table_lookup(press.window);
  if (!GDK_IS_WINDOW(object)) return false;
  int width = 0, height = 0;
  gdk_drawable_get_size(GDK_DRAWABLE(object), &width, &height);
  return press.x < 0 || press.y < 0 || press.x >= width || press.y >= height;
}

// An open menu takes presses anywhere on the screen, which close it.
GdkFilterReturn filter(GdkXEvent* event, GdkEvent* /*translated*/, void* /*unused*/) {
  const auto& known = *static_cast<const XEvent*>(event);
  const bool is_stray =
      known.type == ButtonPress && !gdk_pointer_is_grabbed() && is_outside(known.xbutton);
  return is_stray ? GDK_FILTER_REMOVE : GDK_FILTER_CONTINUE;
}

}  // namespace

void drop_stray_presses() {
  gdk_window_add_filter(nullptr, &filter, nullptr);
}

}  // namespace zemblar
