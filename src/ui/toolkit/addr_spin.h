#pragma once

#include <glibmm/propertyproxy.h>
#include <gtkmm/spinbutton.h>

#include "core/address.h"

namespace zemblar {

/// Edits an address of one kind, within the range of that kind.
///
/// Changing the number keeps the address's type, except that a short address becomes long above
/// 127. `set_long` chooses between the two mobile types; a number above 127 becomes 127 when made
/// short.
class AddrSpin : public Gtk::SpinButton {
 public:
  explicit AddrSpin(Address::Kind kind);

  [[nodiscard]] Address get_address() const { return address_; }
  /// An address of another kind is converted to this kind.
  void set_address(Address address);
  /// Converts the address, and limits it to the range of the kind.
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
