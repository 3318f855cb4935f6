#pragma once

#include <gtkmm/window.h>

namespace zemblar {

/// Scales a length in pixels, designed for a font of 9 points at 96 dpi, to the font of a widget.
/// The result is never shorter.
[[nodiscard]] int for_type(Gtk::Widget& widget, int length);

/// Sets the initial size of a window, scaled with its font and limited by the screen. A negative
/// height means that of the content.
void set_size_for_type(Gtk::Window& window, int width, int height);

}  // namespace zemblar
