#include "ui/canvas/canvas_image.h"

#include <gdkmm/display.h>
#include <gdkmm/gc.h>
#include <gdkmm/general.h>
#include <gdkmm/visual.h>

namespace zemblar {
namespace {

/// True if the pixels of the image have the layout of cairo's FORMAT_RGB24.
bool holds_rgb24(GdkImage* image) {
  const auto* visual = gdk_image_get_visual(image);
  return visual &&
         gdk_visual_get_visual_type(const_cast<GdkVisual*>(visual)) == GDK_VISUAL_TRUE_COLOR &&
         visual->red_mask == 0xFF0000 && visual->green_mask == 0xFF00 &&
         visual->blue_mask == 0xFF && gdk_image_get_bits_per_pixel(image) == 32 &&
         gdk_image_get_byte_order(image) ==
             (G_BYTE_ORDER == G_LITTLE_ENDIAN ? GDK_LSB_FIRST : GDK_MSB_FIRST);
}

}  // namespace

CanvasImage::CanvasImage(const Glib::RefPtr<Gdk::Window>& window, int width, int height)
    : pixmap_(Gdk::Pixmap::create(window, width, height, -1)),
      memory_(Gdk::Image::create(Gdk::IMAGE_FASTEST, window->get_visual(), width, height)) {
  if (memory_ && !holds_rgb24(memory_->gobj())) memory_.reset();
  if (memory_) {
    auto* image = memory_->gobj();
    surface_ = Cairo::ImageSurface::create(static_cast<unsigned char*>(gdk_image_get_pixels(image)),
                                           Cairo::FORMAT_RGB24, width, height,
                                           gdk_image_get_bytes_per_line(image));
  } else {
    surface_ = Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, width, height);
  }
}

bool CanvasImage::has_size(int width, int height) const {
  return surface_->get_width() == width && surface_->get_height() == height;
}

Cairo::RefPtr<Cairo::Context> CanvasImage::context() {
  if (!read_) pixmap_->get_display()->sync();
  read_ = true;
  return Cairo::Context::create(surface_);
}

Cairo::RefPtr<Cairo::Context> CanvasImage::measure() const {
  return Cairo::Context::create(surface_);
}

void CanvasImage::show(const std::vector<PixelBox>& parts) {
  surface_->flush();
  if (!memory_) {
    const auto context = pixmap_->create_cairo_context();
    clip_to(context, parts);
    context->set_source(surface_, 0, 0);
    context->set_operator(Cairo::OPERATOR_SOURCE);
    return context->paint();
  }
  const auto gc = Gdk::GC::create(pixmap_);
  for (const auto& part : parts) {
    const int x = static_cast<int>(part.left);
    const int y = static_cast<int>(part.top);
    pixmap_->draw_image(gc, memory_, x, y, x, y, static_cast<int>(part.right) - x,
                        static_cast<int>(part.bottom) - y);
  }
  read_ = false;
}

void clip_to(const Cairo::RefPtr<Cairo::Context>& context, const std::vector<PixelBox>& parts) {
  context->begin_new_path();
  for (const auto& part : parts) {
    context->rectangle(part.left, part.top, part.right - part.left, part.bottom - part.top);
  }
  context->clip();
}

}  // namespace zemblar
