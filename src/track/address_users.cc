#include "track/address_users.h"

#include <algorithm>
#include <functional>
#include <set>

#include "core/layout.h"
#include "core/toplevel.h"
#include "locomotives/lok.h"
#include "locomotives/lok_registry.h"
#include "track/point_base.h"

namespace zemblar {
namespace {

/// Null stands for the default device, one of whose stations may be the other device.
bool share_device(const Device* one, const Device* other) {
  return !one || !other || one == other;
}

/// True if a command for one also reaches the other, provided that their addresses are equal.
bool are_alike(const Decoder& one, const Decoder& other) {
  return share_device(one.get_device(), other.get_device());
}

bool are_alike(const PointOutput& one, const PointOutput& other) {
  using Type = PointOutput::Type;
  const auto type = one.get_type();
  if (type != other.get_type() || type == Type::Servo) return false;
  const bool is_numbered = type != Type::Extended;
  return share_device(one.get_device(), other.get_device()) &&
         (!is_numbered || one.get_output() == other.get_output());
}

bool has_decoder(const Lok& lok, const Decoder& decoder) {
  const auto& all = lok.get_decoders();
  return std::ranges::any_of(all, [&](const auto& one) { return one.operator->() == &decoder; });
}

/// Calls `visit` for each decoder of every other locomotive.
void visit_others(const Decoder& decoder,
                  const std::function<void(Object&, const Decoder&)>& visit) {
  for_each_lok(Layout::get().get_loks(), [&](Lok& lok) {
    if (has_decoder(lok, decoder)) return;
    for (const auto& other : lok.get_decoders()) visit(lok, *other.operator->());
  });
}

void visit_others(const PointOutput& output,
                  const std::function<void(Object&, const PointOutput&)>& visit) {
  for (auto* child : Layout::get().get_points()) {
    auto* point = dynamic_cast<PointBase*>(child);
    if (!point) continue;
    for (const auto& other : point->get_outputs()) {
      if (other.operator->() != &output) visit(*point, *other.operator->());
    }
  }
}

template <typename Commanded>
std::vector<Object*> find_others(const Commanded& one) {
  std::vector<Object*> found;
  visit_others(one, [&](Object& owner, const Commanded& other) {
    if (!are_alike(one, other) || other.get_address() != one.get_address()) return;
    if (found.empty() || found.back() != &owner) found.push_back(&owner);
  });
  return found;
}

template <typename Commanded>
Address find_free(const Commanded& one) {
  std::set<Address> taken;
  visit_others(one, [&](Object&, const Commanded& other) {
    if (are_alike(one, other)) taken.insert(other.get_address());
  });
  auto address = one.get_address();
  const auto most = Address::max_number(address.get_kind());
  for (unsigned step = 0; step < most; ++step) {
    const auto next = address.get_addr() % most + 1;
    if (next == 1) {
      address = Address(address.get_kind(), 1);
    } else {
      address.set_addr(next);
    }
    if (!taken.contains(address)) return address;
  }
  return one.get_address();
}

}  // namespace

std::vector<Object*> others_at(const Decoder& decoder) {
  return find_others(decoder);
}

std::vector<Object*> others_at(const PointOutput& output) {
  return find_others(output);
}

Address next_free(const Decoder& decoder) {
  return find_free(decoder);
}

Address next_free(const PointOutput& output) {
  return find_free(output);
}

}  // namespace zemblar
