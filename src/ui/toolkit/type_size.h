#pragma once

#include <gtkmm/window.h>

namespace zemblar {

/// A length in pixels that is given for letters of 9 points at 96 dpi, scaled to the letters of a
/// widget. The result is never shorter.
[[nodiscard]] int for_type(Gtk::Widget& widget, int length);

/// Gives a window its first size, which grows with its letters as far as the screen goes. A
/// negative height is that of the content.
void set_size_for_type(Gtk::Window& window, int width, int height);

}  // namespace zemblar
