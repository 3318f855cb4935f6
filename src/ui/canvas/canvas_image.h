#pragma once

#include <cairomm/context.h>
#include <gdkmm/image.h>
#include <gdkmm/pixmap.h>
#include <gdkmm/window.h>

#include "diagram/track_path.h"

namespace zemblar {

/// What a canvas shows, and the image in which it is drawn: the pixmap is the window system's, from
/// where copies to a window cost next to nothing; cairo draws in memory several times faster than
/// there. The memory is shared with the window system if that can be, so that nothing is sent.
class CanvasImage {
 public:
  /// Both of that size in pixels, for that window; at least one each.
  CanvasImage(const Glib::RefPtr<Gdk::Window>& window, int width, int height);

  [[nodiscard]] bool has_size(int width, int height) const;
  /// Where to draw, in pixels. What is there is what was drawn last.
  [[nodiscard]] Cairo::RefPtr<Cairo::Context> context();
  /// Not to draw there, but to see how large things are.
  [[nodiscard]] Cairo::RefPtr<Cairo::Context> measure() const;
  /// Shows these parts, given in whole pixels.
  void show(const std::vector<PixelBox>& parts);
  [[nodiscard]] const Glib::RefPtr<Gdk::Pixmap>& pixmap() const { return pixmap_; }

 private:
  Glib::RefPtr<Gdk::Pixmap> pixmap_;
  Glib::RefPtr<Gdk::Image> memory_;  // null where cairo knows no such pixels
  Cairo::RefPtr<Cairo::ImageSurface> surface_;
  bool read_ = true;  // by the window system, after the last call of `show`
};

/// Confines drawing to these parts, given in pixels.
void clip_to(const Cairo::RefPtr<Cairo::Context>& context, const std::vector<PixelBox>& parts);

}  // namespace zemblar
