#pragma once

#include <glibmm/object.h>
#include <glibmm/propertyproxy.h>

namespace zemblar {

enum class Units : int { millimetres = 0, centimetres, metres, inches, feet };

/// Millimetres in one unit; 0 for a value outside the enumeration.
[[nodiscard]] double millimetres_per(Units units);

/// A length in a chosen unit, also kept in millimetres. Changing the unit keeps the number, so the
/// length changes: a user who corrects the unit meant the number in the new unit.
class Dimension : public Glib::Object {
 public:
  Dimension();

  [[nodiscard]] double get_value_mm() const { return value_mm_; }
  void set_value_mm(double mm);
  [[nodiscard]] double get_value() const { return value_; }
  /// Sets the value in the chosen unit.
  void SetValue(double value);
  [[nodiscard]] Units get_units() const { return units_; }
  void set_units(Units units);

  Glib::PropertyProxy<double> property_value_mm() { return {this, "value-mm"}; }
  Glib::PropertyProxy<double> property_value() { return {this, "value"}; }
  Glib::PropertyProxy<Units> property_units() { return {this, "units"}; }

 private:
  double value_mm_ = 0;
  double value_ = 0;
  Units units_ = Units::millimetres;
};

}  // namespace zemblar
