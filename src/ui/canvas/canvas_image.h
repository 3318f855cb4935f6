#pragma once

#include <cairomm/context.h>
#include <gdkmm/image.h>
#include <gdkmm/pixmap.h>
#include <gdkmm/window.h>

#include "diagram/track_path.h"

namespace zemblar {

/// The picture of a canvas: a pixmap that is shown, and an image in memory in which it is drawn.
/// The pixmap is kept by the window system, so copying it to a window costs next to nothing. Cairo
/// draws in memory several times faster than in a pixmap. If possible, the memory is shared with
/// the window system, so that no pixels are sent.
class CanvasImage {
 public:
  /// Makes both for the window, with this size in pixels; width and height must be at least 1.
  CanvasImage(const Glib::RefPtr<Gdk::Window>& window, int width, int height);

  [[nodiscard]] bool has_size(int width, int height) const;
  /// The context for drawing, in pixels. The image still has what was drawn last.
  [[nodiscard]] Cairo::RefPtr<Cairo::Context> context();
  /// A context for measuring only, not for drawing.
  [[nodiscard]] Cairo::RefPtr<Cairo::Context> measure() const;
  /// Copies these parts, given in whole pixels, to the pixmap.
  void show(const std::vector<PixelBox>& parts);
  [[nodiscard]] const Glib::RefPtr<Gdk::Pixmap>& pixmap() const { return pixmap_; }

 private:
  Glib::RefPtr<Gdk::Pixmap> pixmap_;
  Glib::RefPtr<Gdk::Image> memory_;  // null if cairo cannot draw in its pixel format
  Cairo::RefPtr<Cairo::ImageSurface> surface_;
  bool read_ = true;  // whether the window system has read the image since the last `show`
};

/// Limits drawing to these parts, given in pixels.
void clip_to(const Cairo::RefPtr<Cairo::Context>& context, const std::vector<PixelBox>& parts);

}  // namespace zemblar
