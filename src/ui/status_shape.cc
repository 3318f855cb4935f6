#include "ui/status_shape.h"

#include <cairomm/context.h>
#include <gdkmm/window.h>

#include <cmath>

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

void set_colour(const Context& cr, const Colour& colour) {
  cr->set_source_rgb(colour.red, colour.green, colour.blue);
}

void disc(const Context& cr, double radius) {
  cr->begin_new_path();
  cr->arc(0.5, 0.5, radius, 0, 2 * M_PI);
}

void cross(const Context& cr) {
  cr->begin_new_path();
  cr->move_to(0.15, 0.15);
  cr->line_to(0.85, 0.85);
  cr->move_to(0.85, 0.15);
  cr->line_to(0.15, 0.85);
}

void triangle(const Context& cr) {
  cr->begin_new_path();
  cr->move_to(0.5, 0.04);
  cr->line_to(1, 0.94);
  cr->line_to(0, 0.94);
  cr->close_path();
}

void bars(const Context& cr) {
  cr->begin_new_path();
  cr->rectangle(0.14, 0.08, 0.26, 0.84);
  cr->rectangle(0.6, 0.08, 0.26, 0.84);
}

void octagon(const Context& cr) {
  cr->begin_new_path();
  for (int corner = 0; corner < 8; ++corner) {
    const double angle = (corner + 0.5) * M_PI / 4;
    cr->line_to(0.5 + 0.52 * std::cos(angle), 0.5 + 0.52 * std::sin(angle));
  }
  cr->close_path();
}

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
  const auto cr = get_window()->create_cairo_context();
  cr->rectangle(event->area.x, event->area.y, event->area.width, event->area.height);
  cr->clip();
  const auto room = get_allocation();
  cr->translate(room.get_x() + (room.get_width() - size) / 2,
                room.get_y() + (room.get_height() - size) / 2);
  paint(cr, kind_, size);
  return true;
}

void StatusShape::paint(const Context& cr, Kind kind, double side) {
  cr->scale(side, side);
  cr->set_line_width(0.24);
  cr->set_line_cap(Cairo::LINE_CAP_ROUND);
  switch (kind) {
    case Kind::none:
      break;
    case Kind::well:
      set_colour(cr, green);
      disc(cr, 0.46);
      cr->fill();
      break;
    case Kind::off:
      set_colour(cr, red);
      cr->rectangle(0.08, 0.08, 0.84, 0.84);
      cr->fill();
      break;
    case Kind::waiting:
      set_colour(cr, amber);
      triangle(cr);
      cr->fill();
      break;
    case Kind::lost:
      set_colour(cr, red);
      cross(cr);
      cr->stroke();
      break;
    case Kind::looking:
      set_colour(cr, grey);
      disc(cr, 0.36);
      cr->stroke();
      break;
    case Kind::held:
      set_colour(cr, amber);
      bars(cr);
      cr->fill();
      break;
    case Kind::unsaved:
      set_colour(cr, amber);
      disc(cr, 0.3);
      cr->fill();
      break;
    case Kind::stop:
      set_colour(cr, red);
      octagon(cr);
      cr->fill();
      break;
  }
}

}  // namespace zemblar
