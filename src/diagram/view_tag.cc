#include "diagram/view_tag.h"

#include <cmath>
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

// Nothing may be blended: a colour between two numbers would be a third one.
void TagImage::begin(int width, int height, const Cairo::Matrix& matrix) {
  table_.clear();
  surface_ = Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, width, height);
  context_ = Cairo::Context::create(surface_);
  context_->set_source_rgb(0, 0, 0);
  context_->set_antialias(Cairo::ANTIALIAS_NONE);
  context_->set_operator(Cairo::OPERATOR_SOURCE);
  context_->set_matrix(matrix);
  context_->paint();
}

std::shared_ptr<const ViewTag> TagImage::hit(double x, double y) const {
  if (!surface_) return {};
  const double column = std::round(x);
  const double row = std::round(y);
  if (!(column >= 0 && column < surface_->get_width() && row >= 0 &&
        row < surface_->get_height())) {
    return {};
  }
  surface_->flush();
  const auto offset = static_cast<std::ptrdiff_t>(row) * surface_->get_stride() +
                      static_cast<std::ptrdiff_t>(column) * 4;
  std::uint32_t pixel = 0;
  std::memcpy(&pixel, surface_->get_data() + offset, sizeof pixel);
  const auto number = pixel & colour_bits;
  if (number == 0) return {};
  if (number > table_.size()) throw std::logic_error("Invalid selection_table index");
  return table_[number - 1];
}

}  // namespace zemblar
