#include "core/address.h"

#include <algorithm>
#include <cassert>
#include <ostream>

#include "core/yaml_io.h"

namespace zemblar {

Address::Address(unsigned addr) {
  assert((addr > 0) && (addr < 10240));
  set(addr <= max_short ? SHORT : LONG, addr);
}

Address::Address(unsigned addr, bool is_long) {
  assert((addr > 0) && (addr <= 10239));
  if (!is_long) assert(addr <= 127);
  set(is_long ? LONG : SHORT, addr);
}

Address::Address(Kind kind, unsigned addr) {
  switch (kind) {
    case Kind::mobile:
      *this = Address(addr);
      return;
    case Kind::accessory:
      assert((addr > 0) && (addr <= 512));
      set(ACCESSORY, addr);
      return;
    case Kind::output:
      assert((addr > 0) && (addr <= 2048));
      set(OUTPUT, addr);
      return;
  }
  assert(false);
}

unsigned Address::max_number(Kind kind) {
  switch (kind) {
    case Kind::mobile:
      return max_long;
    case Kind::accessory:
      return max_accessory;
    case Kind::output:
      return max_output;
  }
  assert(false);
  return 0;
}

Address::Kind Address::get_kind() const {
  if (type() == ACCESSORY) return Kind::accessory;
  return type() == OUTPUT ? Kind::output : Kind::mobile;
}

void Address::set_kind(Kind kind) {
  const auto addr = std::min(get_addr(), max_number(kind));
  *this = Address(kind, addr);
}

void Address::set_addr(unsigned addr) {
  switch (type()) {
    case SHORT:
    case LONG:
      assert((addr > 0) && (addr <= 10239));
      return set(is_long() || addr > max_short ? LONG : SHORT, addr);
    case ACCESSORY:
      assert((addr > 0) && (addr <= 512));
      return set(ACCESSORY, addr);
    default:
      assert((addr > 0) && (addr <= 2048));
      return set(OUTPUT, addr);
  }
}

void Address::set_long(bool is_long) {
  assert(((address_ & TYPE_MASK) == SHORT) || ((address_ & TYPE_MASK) == LONG));
  if (is_long) {
    set(LONG, get_addr());
  } else {
    set(SHORT, std::min(get_addr(), max_short));
  }
}

std::ostream& operator<<(std::ostream& out, Address address) {
  if (address.is_long() && address.get_addr() <= Address::max_short) out << "!long ";
  return out << address.get_addr();
}

YAML::Emitter& operator<<(YAML::Emitter& out, Address address) {
  if (address.is_long() && address.get_addr() <= Address::max_short) {
    out << YAML::LocalTag("long");
  }
  return out << address.get_addr();
}

void read_address(const YAML::Node& node, Address::Kind kind, Address& address) {
  const auto& tag = node.Tag();
  const bool is_long = tag == "!long";
  unsigned addr = 0;
  node >> addr;
  // In quotes, a number has the tag "!".
  const bool plain = tag.empty() || tag == "?" || tag == "!";
  const bool known_tag = is_long ? kind == Address::Kind::mobile : plain;
  if (!known_tag || addr == 0 || addr > Address::max_number(kind)) {
    throw YAML::InvalidScalar(node.Mark());
  }
  address = is_long ? Address(addr, true) : Address(kind, addr);
}

void operator>>(const YAML::Node& node, Address& address) {
  read_address(node, Address::Kind::mobile, address);
}

}  // namespace zemblar
