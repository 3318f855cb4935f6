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

/// Serial number of the first X request that may have grabbed the pointer. Events with a lower
/// number happened without a grab.
unsigned long first_grab = 0;

// True if the pointer may have been grabbed when the event happened. An open menu grabs it and
// needs presses anywhere on the screen, which close it. GDK too considers the grab at the time of
// the press, not the present one.
bool was_grabbed(const XAnyEvent& event) {
  if (!gdk_pointer_is_grabbed()) first_grab = XNextRequest(event.display);
  return event.serial >= first_grab;
}

GdkFilterReturn filter(GdkXEvent* event, GdkEvent* /*translated*/, void* /*unused*/) {
  const auto& known = *static_cast<const XEvent*>(event);
  const bool grabbed = was_grabbed(known.xany);
  const bool is_stray = known.type == ButtonPress && !grabbed && is_outside(known.xbutton);
  return is_stray ? GDK_FILTER_REMOVE : GDK_FILTER_CONTINUE;
}

}  // namespace

void drop_stray_presses() {
  gdk_window_add_filter(nullptr, &filter, nullptr);
}

}  // namespace zemblar
