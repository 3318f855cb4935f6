#include "diagram/view_tag.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace zemblar {
namespace {

constexpr std::uint32_t colour_bits = 0xffffff;

double channel(std::size_t number, unsigned shift) {
  return static_cast<double>(number >> shift & 255) / 255.0;
}

}  // namespace

void add_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table,
             std::shared_ptr<const ViewTag> tag) {
  table.push_back(std::move(tag));
  const auto number = table.size();
  context->set_source_rgb(channel(number, 16), channel(number, 8), channel(number, 0));
}

// Disables blending: a colour blended of two numbers would be the number of a third tag.
void TagImage::begin(int width, int height, const Cairo::Matrix& matrix) {
  table_.clear();
  pixels_ = nullptr;
  if (!surface_ || width != width_ || height != height_) {
    surface_ = Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, width, height);
    width_ = width;
    height_ = height;
  }
  context_ = Cairo::Context::create(surface_);
  context_->set_source_rgb(0, 0, 0);
  context_->set_antialias(Cairo::ANTIALIAS_NONE);
  context_->set_tolerance(0.5);  // pixels; finer than anybody can click
  context_->set_operator(Cairo::OPERATOR_SOURCE);
  context_->set_matrix(matrix);
  context_->paint();
}

const std::shared_ptr<const ViewTag>& TagImage::hit(double x, double y) const {
  static const std::shared_ptr<const ViewTag> nothing;
  // Coordinates are rounded to whole pixels.
  const bool inside = x > -0.5 && x < width_ - 0.5 && y > -0.5 && y < height_ - 0.5;
  if (!inside) return nothing;
  if (!pixels_) {
    surface_->flush();
    pixels_ = surface_->get_data();
    stride_ = surface_->get_stride();
  }
  const auto column = static_cast<std::ptrdiff_t>(x + 0.5);
  const auto row = static_cast<std::ptrdiff_t>(y + 0.5);
  std::uint32_t pixel = 0;
  std::memcpy(&pixel, pixels_ + row * stride_ + column * 4, sizeof pixel);
  const auto number = pixel & colour_bits;
  if (number == 0) return nothing;
  if (number > table_.size()) throw std::logic_error("Invalid selection_table index");
  return table_[number - 1];
}

}  // namespace zemblar
