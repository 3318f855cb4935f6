#include "simulator/railway/linked_railway.h"

#include <algorithm>

#include "core/layout.h"
#include "core/status.h"
#include "devices/default_device.h"
#include "simulator/railway/ecos_station_link.h"
#include "simulator/railway/liusb_station_link.h"

namespace zemblar::simulator {
namespace {

using namespace std::chrono_literals;

constexpr auto start_time = 3s;
/// What waits on fibers gets the time to notice its end.
constexpr auto farewell = 10s;
/// Points of the traffic; those below are for whoever counts them.
constexpr unsigned first_point = 129;
constexpr unsigned last_point = 256;

Layout& empty_layout() {
  auto& layout = Layout::get(new Layout);
  layout.new_document(false);
  clear_status();
  return layout;
}

}  // namespace

LinkedRailway::LinkedRailway(const std::vector<StationKind>& kinds, unsigned trains,
                             std::uint64_t seed)
    : chance(seed) {
  auto& layout = empty_layout();
  for (const auto kind : kinds) {
    if (kind == StationKind::ecos) {
      links_.push_back(std::make_unique<EcosStationLink>(trains));
    } else {
      links_.push_back(std::make_unique<LiUsbStationLink>());
    }
  }
  for (unsigned address = 1; address <= trains; ++address) {
    loks_.push_back(layout.get_loks().add(new Lok));
    loks_.back()->get_decoders().front()->set_address(Address(address));
  }
  clock.advance(start_time);
  layout.set_track_power(true);
  clock.advance(start_time);
}

LinkedRailway::~LinkedRailway() {
  end_traffic();
  for (const auto& link : links_) link->end(true);
  Layout::get().get_devices().destroy_children();
  clock.advance(farewell);
  Layout::get().destroy();
  clock.advance(0ms);
}

bool LinkedRailway::all_in_service() const {
  return std::ranges::all_of(links_, [](const auto& link) {
    return link->device().link_state().phase == LinkPhase::in_service;
  });
}

void LinkedRailway::throw_point(unsigned address) {
  Layout::get().get_default_device().run_set_point(address, 1, true);
}

// --- Traffic ---

void LinkedRailway::begin_traffic(const Traffic& traffic) {
  traffic_ = traffic;
  wish_later();
}

void LinkedRailway::wish_later() {
  next_wish_ = Timeout::once(chance.between(0ms, 2 * traffic_.mean_pause), [this] {
    wish_later();
    wish();
  });
}

unsigned LinkedRailway::some_train() {
  if (traffic_.favourite > 0 && chance.happens(1. / 3)) return traffic_.favourite;
  for (;;) {
    const auto address = 1 + static_cast<unsigned>(chance.below(trains()));
    if (address != traffic_.spared) return address;
  }
}

void LinkedRailway::wish() {
  unsigned address = 0;
  if (chance.happens(traffic_.power)) {
    power_wished_ = chance.happens(0.5);
    Layout::get().set_track_power(power_wished_);
  } else if (chance.happens(0.1)) {
    return throw_point(first_point + points_++ % (last_point - first_point + 1));
  } else {
    address = some_train();
    drive(address);
  }
  if (listener_) listener_(address);
}

unsigned LinkedRailway::some_function(unsigned address) {
  constexpr unsigned favourite = 2;
  if (address == traffic_.favourite && chance.happens(0.5)) return favourite;
  return static_cast<unsigned>(chance.below(functions));
}

void LinkedRailway::drive(unsigned address) {
  constexpr unsigned most = DecoderUpdate::max_speed;
  auto& lok = this->lok(address);
  const bool may_stop = traffic_.favourite == 0 || address == traffic_.favourite;
  switch (chance.below(4)) {
    case 0:
      return lok.set_direction(opposite(lok.get_direction()));
    case 1:
      return decoder(address).set_function(some_function(address), chance.happens(0.5));
    default:
      if (!may_stop || !chance.happens(traffic_.stops)) {
        return lok.set_speed(1 + static_cast<unsigned>(chance.below(most)));
      }
      return chance.happens(0.5) ? lok.set_speed(0) : lok.set_emergency_stop(true);
  }
}

}  // namespace zemblar::simulator
