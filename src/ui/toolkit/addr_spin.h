#pragma once

#include <glibmm/propertyproxy.h>
#include <gtkmm/spinbutton.h>

#include "core/address.h"

namespace zemblar {

/// Edits an address of one kind, within the range of that kind.
///
/// The number keeps the address's type, but for a short one that exceeds 127 and becomes long;
/// `set_long` chooses between the two mobile types, and makes a number above 127 fit.
class AddrSpin : public Gtk::SpinButton {
 public:
  explicit AddrSpin(Address::Kind kind);

  [[nodiscard]] Address get_address() const { return address_; }
  /// Of another kind, it is re-typed.
  void set_address(Address address);
  /// Re-types the address, and takes the range of the kind.
  void set_kind(Address::Kind kind);
  /// Mobile addresses only.
  void set_long(bool is_long);
  Glib::PropertyProxy<Address> property_address() { return {this, "address"}; }

 protected:
  void on_value_changed() override;

 private:
  Address::Kind kind_;
  Address address_;
};

}  // namespace zemblar
