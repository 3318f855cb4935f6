#include "ui/status/status_shape.h"

#include <gdkmm/window.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "ui/toolkit/centred_context.h"

namespace zemblar {
namespace {

using Context = Cairo::RefPtr<Cairo::Context>;

struct Colour {
  double red, green, blue;
};
constexpr Colour green{0.15, 0.6, 0.15};
constexpr Colour red{0.8, 0.05, 0.05};
constexpr Colour amber{0.9, 0.55, 0};
constexpr Colour grey{0.45, 0.45, 0.45};

void disc(const Context& cr) {
  cr->arc(0.5, 0.5, 0.46, 0, 2 * M_PI);
}

void small_disc(const Context& cr) {
  cr->arc(0.5, 0.5, 0.3, 0, 2 * M_PI);
}

void ring(const Context& cr) {
  cr->arc(0.5, 0.5, 0.36, 0, 2 * M_PI);
}

void square(const Context& cr) {
  cr->rectangle(0.08, 0.08, 0.84, 0.84);
}

void cross(const Context& cr) {
  cr->move_to(0.15, 0.15);
  cr->line_to(0.85, 0.85);
  cr->move_to(0.85, 0.15);
  cr->line_to(0.15, 0.85);
}

void triangle(const Context& cr) {
  cr->move_to(0.5, 0.04);
  cr->line_to(1, 0.94);
  cr->line_to(0, 0.94);
  cr->close_path();
}

void bars(const Context& cr) {
  cr->rectangle(0.14, 0.08, 0.26, 0.84);
  cr->rectangle(0.6, 0.08, 0.26, 0.84);
}

void octagon(const Context& cr) {
  for (int corner = 0; corner < 8; ++corner) {
    const double angle = (corner + 0.5) * M_PI / 4;
    cr->line_to(0.5 + 0.52 * std::cos(angle), 0.5 + 0.52 * std::sin(angle));
  }
  cr->close_path();
}

struct Figure {
  StatusShape::Kind kind;
  const Colour& colour;
  void (*outline)(const Context& cr);  // in a unit square
  void (Cairo::Context::*draw)();
};
const Figure figures[] = {
    {StatusShape::Kind::well, green, &disc, &Cairo::Context::fill},
    {StatusShape::Kind::off, red, &square, &Cairo::Context::fill},
    {StatusShape::Kind::waiting, amber, &triangle, &Cairo::Context::fill},
    {StatusShape::Kind::lost, red, &cross, &Cairo::Context::stroke},
    {StatusShape::Kind::looking, grey, &ring, &Cairo::Context::stroke},
    {StatusShape::Kind::held, amber, &bars, &Cairo::Context::fill},
    {StatusShape::Kind::unsaved, amber, &small_disc, &Cairo::Context::fill},
    {StatusShape::Kind::stop, red, &octagon, &Cairo::Context::fill},
};

}  // namespace

StatusShape::StatusShape(Kind kind) : Glib::ObjectBase("StatusShape"), kind_(kind) {
  set_has_window(false);
}

void StatusShape::set_kind(Kind kind) {
  if (kind == kind_) return;
  kind_ = kind;
  queue_resize();
}

void StatusShape::on_size_request(Gtk::Requisition* requisition) {
  requisition->width = kind_ == Kind::none ? 0 : size;
  requisition->height = requisition->width;
}

bool StatusShape::on_expose_event(GdkEventExpose* event) {
  const auto* figure = std::ranges::find(figures, kind_, &Figure::kind);
  if (figure == std::end(figures)) return true;
  const auto cr = centred_context(*this, *event, size);
  cr->scale(size, size);
  cr->set_line_width(0.24);
  cr->set_line_cap(Cairo::LINE_CAP_ROUND);
  cr->set_source_rgb(figure->colour.red, figure->colour.green, figure->colour.blue);
  figure->outline(cr);
  ((*cr.operator->()).*figure->draw)();
  return true;
}

}  // namespace zemblar
