#include "devices/default_device.h"

#include <algorithm>

#include "core/i18n.h"
#include "devices/decoder_proxy.h"
#include "devices/station_proxy.h"

namespace zemblar {

DefaultDevice::DefaultDevice() : Glib::ObjectBase("DefaultDevice"), Device(_("Default Device")) {
  enter_service();
}

void DefaultDevice::add_device(Device* device) {
  if (!devices_.insert(device).second) return;
  // The new member has not got the commands in flight.
  for (auto& [item, newest] : newest_) newest.reaches_all = false;
  members_[device] = {
      sigc::connection(device->signal_deleted().connect([this, device] { forget(device); })),
      sigc::connection(
          device->signal_link_changed().connect([this, device] { follow_link(*device); }))};
}

// Ends the errands at the station without an answer; the station gets these items when it joins
// again.
void DefaultDevice::remove_device(Device* device) {
  if (devices_.erase(device) == 0) return;
  members_.erase(device);
  auto& missed = missed_by(device).items;
  const auto left = errands_at(*device);
  for (const auto& [item, errand] : left) missed[item.first] |= item.second;
  std::erase_if(let_go_, [device](const auto& entry) { return entry.first.first == device; });
  for (const auto& [item, errand] : left) errand->abandon();
}

DefaultDevice::Missed& DefaultDevice::missed_by(Device* device) {
  const auto [entry, is_new] = missed_.try_emplace(device);
  if (is_new) {
    entry->second.deleted =
        sigc::connection(device->signal_deleted().connect([this, device] { forget(device); }));
  }
  return entry->second;
}

void DefaultDevice::forget(Device* device) {
  const auto alive = liveness();
  remove_device(device);
  if (*alive) missed_.erase(device);
}

std::vector<DefaultDevice::Errand> DefaultDevice::errands_at(const Device& device) const {
  std::vector<Errand> found;
  for (const auto& [item, newest] : newest_) {
    for (const auto& errand : newest.errands) {
      if (errand->station() == &device) found.emplace_back(item, errand);
    }
  }
  for (const auto& [place, errand] : let_go_) {
    if (errand->station() == &device) found.emplace_back(place.second, errand);
  }
  return found;
}

// When a station stops answering, fan-outs continue without it.
void DefaultDevice::follow_link(Device& device) {
  const auto alive = liveness();
  if (device.link_state().phase != LinkPhase::waiting_for_answer) return;
  for (const auto& [item, errand] : errands_at(device)) {
    if (!*alive) return;
    const auto newest = newest_.find(item);
    if (newest != newest_.end()) go_on_without_held_up(item, newest->second.errands);
  }
}

void DefaultDevice::go_on_without_held_up(const Item& item,
                                          const std::vector<Glib::RefPtr<StationProxy>>& errands) {
  const auto alive = liveness();
  const auto all = errands;  // a copy, since the last answer ends the fan-out
  const auto waits = [](const auto& errand) { return errand->is_held_up(); };
  if (std::ranges::all_of(all, waits)) return;
  for (const auto& errand : all) {
    if (!*alive) return;
    if (!errand->station() || !waits(errand)) continue;
    let_go_[{errand->station(), item}] = errand;
    errand->let_go();
  }
}

std::uint32_t DefaultDevice::take_missed(const Device& device, const DrivenDecoder& decoder) {
  const auto found = missed_.find(&device);
  if (found == missed_.end()) return DecoderUpdate::all_bits;
  return std::exchange(found->second.items[&decoder], 0);
}

int DefaultDevice::supports(std::string_view feature) const {
  if (devices_.empty()) return 0;
  const auto answers = [feature](const Device* device) { return device->supports(feature); };
  if (std::ranges::all_of(devices_, [&](auto* device) { return answers(device) == 2; })) return 2;
  return std::ranges::any_of(devices_, [&](auto* device) { return answers(device) != 0; }) ? 1 : 0;
}

// Stations may join and leave during an operation, so iterates over a copy and skips those that
// have left.
void DefaultDevice::for_each_in_service(const std::function<void(Device&)>& visit) {
  const auto alive = liveness();
  const auto members = devices_;
  for (auto* device : members) {
    if (*alive && devices_.contains(device) && device->active()) visit(*device);
  }
}

void DefaultDevice::power_on() {
  for_each_in_service([](Device& device) { device.set_track_power(true); });
}

void DefaultDevice::power_off() {
  for_each_in_service([](Device& device) { device.set_track_power(false); });
}

void DefaultDevice::set_point(unsigned address, unsigned output, bool on) {
  for_each_in_service([=](Device& device) { device.run_set_point(address, output, on); });
}

void DefaultDevice::set_aspect(unsigned address, unsigned aspect) {
  for_each_in_service([=](Device& device) { device.run_set_aspect(address, aspect); });
}

void DefaultDevice::update_speed(DrivenDecoder* decoder) {
  fan_out(decoder, DecoderUpdate::speed_bit);
}

void DefaultDevice::update_direction(DrivenDecoder* decoder) {
  fan_out(decoder, DecoderUpdate::direction_bit);
}

void DefaultDevice::update_function(DrivenDecoder* decoder, unsigned fn) {
  fan_out(decoder, DecoderUpdate::function_bit(fn));
}

bool DefaultDevice::is_on_its_way(const Item& item, std::uint32_t value) const {
  const auto found = newest_.find(item);
  return found != newest_.end() && found->second.reaches_all && found->second.value == value;
}

void DefaultDevice::fan_out(DrivenDecoder* decoder, std::uint32_t bit) {
  const auto serves = [decoder](Device* device) {
    return device->active() && device->can_address(*decoder);
  };
  if (std::ranges::none_of(devices_, serves)) return;
  const Item item(decoder, bit);
  const auto value = decoder->state().value_of(bit);
  if (is_on_its_way(item, value)) return;

  const auto alive = liveness();
  note_missing(decoder, bit);
  const auto serial = ++fan_outs_;
  const auto older = std::exchange(newest_[item], FanOut{value, serial});
  for (const auto& errand : older.errands) errand->abandon();
  if (!*alive) return;
  abandon_let_go(item);
  const auto answers = DecoderProxy::create(decoder);
  answers->wait(send_errands(decoder, item, answers));
  if (!*alive) return;
  const auto newest = newest_.find(item);
  const bool is_newest = newest != newest_.end() && newest->second.serial == serial;
  // A station that has joined meanwhile has not got the item.
  const bool counts = is_newest && newest->second.reaches_all;
  if (is_newest) newest_.erase(newest);
  // The stations may have delivered more items than this one.
  if (counts) note_missing(decoder, answers->state().mask);
  decoder->complete(counts ? answers->state() : DecoderUpdate());
}

/// Records the items for stations that have left, which get them when they join again.
void DefaultDevice::note_missing(const DrivenDecoder* decoder, std::uint32_t items) {
  for (auto& [device, missed] : missed_) {
    if (!members_.contains(device)) missed.items[decoder] |= items;
  }
}

// A message may contain more than its item. For example a station that has delivered the direction
// may get another direction together with the next speed, while other stations have not answered
// yet.
void DefaultDevice::note_sent(const DrivenDecoder* decoder, const DecoderUpdate& delivered) {
  for (auto entry = newest_.lower_bound({decoder, 0});
       entry != newest_.end() && entry->first.first == decoder; ++entry) {
    const auto bit = entry->first.second;
    const bool differs = delivered.value_of(bit) != entry->second.value;
    if ((delivered.mask & bit) != 0 && differs) entry->second.reaches_all = false;
  }
}

// Ends errands of the item that a newer command replaces.
void DefaultDevice::abandon_let_go(const Item& item) {
  std::erase_if(let_go_, [&item](const auto& entry) {
    if (entry.first.second != item) return false;
    entry.second->abandon();
    return true;
  });
}

/// Sends the item to all stations; returns the number of answers to wait for.
int DefaultDevice::send_errands(DrivenDecoder* decoder, const Item& item,
                                const Glib::RefPtr<DecoderProxy>& answers) {
  const auto alive = liveness();
  decoder->reference();
  const Glib::RefPtr<DrivenDecoder> parent(decoder);
  auto& errands = newest_[item].errands;
  for_each_in_service([&](Device& device) {
    if (!device.can_address(*decoder)) return;
    errands.push_back(StationProxy::create(parent, item.second, device, answers));
    errands.back()->on_more_delivered([this, alive, decoder](const DecoderUpdate& delivered) {
      if (*alive) note_sent(decoder, delivered);
    });
  });
  const auto sent = errands;  // a copy, since an answer at once may begin the next fan-out
  for (const auto& errand : sent) errand->ask();
  if (*alive) go_on_without_held_up(item, sent);
  return static_cast<int>(sent.size());
}

}  // namespace zemblar
