#pragma once

#include <gdkmm/drawable.h>

#include <vector>

namespace zemblar::test {

/// What a part of a window or pixmap shows, row by row.
inline std::vector<unsigned> pixels_of(const Glib::RefPtr<Gdk::Drawable>& shown, int left, int top,
                                       int width, int height) {
  auto* image = gdk_drawable_get_image(shown->gobj(), left, top, width, height);
  std::vector<unsigned> pixels;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      pixels.push_back(static_cast<unsigned>(gdk_image_get_pixel(image, x, y)) & 0xFFFFFF);
    }
  }
  g_object_unref(image);
  return pixels;
}

}  // namespace zemblar::test
