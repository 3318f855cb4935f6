#include "locomotives/lok_registry.h"

#include <algorithm>
#include <map>
#include <utility>

#include "core/layout.h"
#include "devices/default_device.h"
#include "locomotives/lok.h"
#include "locomotives/lok_group.h"

namespace zemblar {
namespace {

using Place = std::pair<Device*, Address>;

/// The locomotives with one address on one device, in the order of registration.
using Queue = std::map<unsigned, Lok*>;

std::map<Place, Queue>& queues() {
  static std::map<Place, Queue> by_place;
  return by_place;
}

unsigned next_turn() {
  static unsigned turn = 0;
  return ++turn;
}

/// Sends a station that has come into service what it has missed: stops first, then other commands
/// by Device::rank, in each rank last what the station may refuse. A station that is new to the
/// default device gets everything that was ever commanded.
void resend_through(Device& device) {
  if (!Layout::exists()) return;
  auto& defaults = Layout::get().get_default_device();
  const bool is_member = defaults.devices().contains(&device);
  std::vector<Glib::RefPtr<Decoder>> concerned;
  for_each_lok(Layout::get(), [&](Lok& lok) {
    for (const auto& decoder : lok.get_decoders()) {
      const auto* driver = decoder->get_device();
      if (driver ? driver == &device : is_member) concerned.push_back(decoder);
    }
  });
  if (is_member) {
    for (const auto& decoder : concerned) {
      if (!decoder->get_device())
        decoder->mark_out_of_date(defaults.take_missed(device, *decoder.operator->()));
    }
  }
  std::ranges::stable_sort(concerned, {},
                           [&](const auto& one) { return device.rank(*one.operator->()); });
  for (const auto& decoder : concerned) decoder->resend();
}

const sigc::connection resend_when_in_service =
    Device::signal_in_service().connect(sigc::ptr_fun(&resend_through));

bool holds_loks(const Object* object) {
  return dynamic_cast<const LokToplevel*>(object) || dynamic_cast<const LokGroup*>(object);
}

}  // namespace

void LokRegistry::update(const std::vector<Glib::RefPtr<Decoder>>& decoders) {
  auto former = std::exchange(entries_, {});
  for (const auto& decoder : decoders) {
    auto& device = decoder->driving_device();
    const auto address = decoder->get_address();
    const auto same = std::ranges::find_if(former, [&](const Entry& entry) {
      return entry.device == &device && entry.address == address && *entry.device_lives;
    });
    if (same == former.end()) {
      entries_.push_back(enter(device, address));
    } else {
      entries_.push_back(*same);
      former.erase(same);
    }
  }
  for (const auto& entry : former) withdraw(entry);
}

void LokRegistry::clear() {
  for (const auto& entry : std::exchange(entries_, {})) withdraw(entry);
}

LokRegistry::Entry LokRegistry::enter(Device& device, Address address) const {
  const auto turn = next_turn();
  queues()[{&device, address}].emplace(turn, lok_);
  device.add_lok(address, lok_);
  return {&device, address, turn, device.liveness()};
}

void LokRegistry::withdraw(const Entry& entry) const {
  const auto found = queues().find({entry.device, entry.address});
  auto& queue = found->second;
  queue.erase(entry.turn);
  auto* const next = queue.empty() ? nullptr : queue.begin()->second;
  if (queue.empty()) queues().erase(found);
  if (!*entry.device_lives || next == lok_) return;
  entry.device->remove_lok(entry.address, lok_);
  if (next) entry.device->add_lok(entry.address, next);
}

void for_each_lok(const Object& parent, const std::function<void(Lok&)>& visit) {
  for (auto* child : parent) {
    if (auto* lok = dynamic_cast<Lok*>(child)) {
      visit(*lok);
    } else if (holds_loks(child)) {
      for_each_lok(*child, visit);
    }
  }
}

}  // namespace zemblar
