#pragma once

#include <gdk/gdk.h>

namespace zemblar::test {

/// A window manager while a window is being moved, say: it holds the pointer, if it can have it.
class OtherProgram {
 public:
  OtherProgram() {
    static auto* connection = gdk_display_open(nullptr);
    display_ = connection;
    gdk_display_sync(gdk_display_get_default());
    auto* root = gdk_screen_get_root_window(gdk_display_get_default_screen(display_));
    has_pointer_ = gdk_pointer_grab(root, FALSE, GDK_BUTTON_PRESS_MASK, nullptr, nullptr,
                                    GDK_CURRENT_TIME) == GDK_GRAB_SUCCESS;
  }
  ~OtherProgram() {
    if (has_pointer_) gdk_display_pointer_ungrab(display_, GDK_CURRENT_TIME);
    gdk_display_sync(display_);
  }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  [[nodiscard]] bool has_pointer() const { return has_pointer_; }

 private:
  GdkDisplay* display_;
  bool has_pointer_;
};

}  // namespace zemblar::test
