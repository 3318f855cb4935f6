#include "ui/toolkit/type_size.h"

#include <algorithm>

namespace zemblar {
namespace {

constexpr int designed_height = 15;  // height in pixels of a line of text in the design font

int within(int length, int screen) {
  return std::min(length, screen * 9 / 10);
}

}  // namespace

int for_type(Gtk::Widget& widget, int length) {
  widget.ensure_style();
  const auto metrics =
      widget.get_pango_context()->get_metrics(widget.get_pango_context()->get_font_description());
  const int height = PANGO_PIXELS(metrics.get_ascent() + metrics.get_descent());
  return length * std::max(height, designed_height) / designed_height;
}

void set_size_for_type(Gtk::Window& window, int width, int height) {
  const auto screen = window.get_screen();
  window.set_default_size(within(for_type(window, width), screen->get_width()),
                          height < 0 ? -1 : within(for_type(window, height), screen->get_height()));
}

}  // namespace zemblar
