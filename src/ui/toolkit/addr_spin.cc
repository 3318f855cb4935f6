#include "ui/toolkit/addr_spin.h"

#include "core/property.h"

namespace zemblar {

AddrSpin::AddrSpin(Address::Kind kind) : Glib::ObjectBase("AddrSpin"), kind_(kind) {
  register_property<Address>(this, "address", &AddrSpin::get_address, &AddrSpin::set_address);
  address_.set_kind(kind);
  set_digits(0);
  set_numeric();
  set_increments(1, 10);
  set_range(1, Address::max_number(kind));
  set_value(address_.get_addr());
}

void AddrSpin::set_kind(Address::Kind kind) {
  if (kind == kind_) return;
  kind_ = kind;
  set_address(address_);
  set_range(1, Address::max_number(kind));
}

void AddrSpin::set_address(Address address) {
  // Converting would make a long address below 128 short.
  if (address.get_kind() != kind_) address.set_kind(kind_);
  if (address == address_) return;
  address_ = address;
  set_value(address.get_addr());
  notify_property(*this, "address");
}

void AddrSpin::set_long(bool is_long) {
  auto address = address_;
  address.set_long(is_long);
  set_address(address);
}

void AddrSpin::on_value_changed() {
  Gtk::SpinButton::on_value_changed();
  auto address = address_;
  address.set_addr(static_cast<unsigned>(get_value_as_int()));
  set_address(address);
}

}  // namespace zemblar
