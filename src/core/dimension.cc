#include "core/dimension.h"

#include "core/property.h"

namespace zemblar {

double millimetres_per(Units units) {
  switch (units) {
    case Units::millimetres:
      return 1;
    case Units::centimetres:
      return 10;
    case Units::metres:
      return 1000;
    case Units::inches:
      return 25.4;
    case Units::feet:
      return 304.8;
  }
  return 0;
}

Dimension::Dimension() : Glib::ObjectBase("Dimension") {
  register_property<double>(this, "value-mm", &Dimension::get_value_mm, &Dimension::set_value_mm);
  register_property<double>(this, "value", &Dimension::get_value, &Dimension::SetValue);
  register_property<Units>(this, "units", &Dimension::get_units, &Dimension::set_units);
}

void Dimension::set_value_mm(double mm) {
  if (mm == value_mm_) return;
  value_mm_ = mm;
  const auto factor = millimetres_per(units_);
  if (factor > 0) value_ = mm / factor;
  notify_property(*this, "value-mm");
  notify_property(*this, "value");
}

void Dimension::SetValue(double value) {
  if (value == value_) return;
  value_ = value;
  value_mm_ = value * millimetres_per(units_);
  notify_property(*this, "value");
  notify_property(*this, "value-mm");
}

void Dimension::set_units(Units units) {
  if (units == units_) return;
  units_ = units;
  value_mm_ = value_ * millimetres_per(units);
  notify_property(*this, "units");
  notify_property(*this, "value-mm");
}

}  // namespace zemblar
