#pragma once

#include <array>
#include <functional>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "devices/decoder_proxy.h"
#include "devices/device.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

class StationProxy;

/// Forwards every operation to all command stations that are marked for default use.
///
/// One per layout, a part of the Layout and not a child of its devices; always active. Stations
/// join when they come into service and leave with it. A decoder update is fanned out through a
/// DecoderProxy and answered when all stations have answered; without any station in service it is
/// not answered at all, so that the decoder stays out of date and tries again when one comes.
///
/// Each station has a StationProxy of its own, which asks again until that station has delivered
/// the value: a station that is mute or refuses keeps no other one from its trains. What a station
/// has not got when it leaves, and what is wished while it is away, is known until it joins again.
/// A fan-out ends early when a newer one of the same decoder and item begins, so that never more
/// than the newest waits at a station.
///
/// A fan-out is skipped when the newest unanswered one of the same decoder and item carries the
/// same value and went to all who are there now: a burst of changes costs one command each and not
/// one for each pair.
class DefaultDevice : public Device {
 public:
  DefaultDevice();

  void add_device(Device* device);
  void remove_device(Device* device);
  [[nodiscard]] const std::set<Device*>& devices() const { return devices_; }
  /// The items of the decoder that went out while the station was away, or never reached it; all
  /// for a station that has never been a member. Asked once.
  [[nodiscard]] std::uint32_t take_missed(const Device& device, const DrivenDecoder& decoder);

  /// The station was told other values of these items than the decoder wants. It gets the wanted
  /// ones when it joins again.
  void note_not_told(Device& device, const DrivenDecoder& decoder, std::uint32_t items) {
    missed_by(&device).items[&decoder] |= items;
  }

  /// 2 when every station supports the feature, 1 when some do, 0 when none does or there is none.
  [[nodiscard]] int supports(std::string_view feature) const override;

 protected:
  void power_on() override;
  void power_off() override;
  void update_speed(DrivenDecoder* decoder) override;
  void update_direction(DrivenDecoder* decoder) override;
  void update_function(DrivenDecoder* decoder, unsigned fn) override;
  void set_point(unsigned address, unsigned output, bool on) override;
  void set_aspect(unsigned address, unsigned aspect) override;

 private:
  /// The decoder and the bit of what is sent to it.
  using Item = std::pair<const DrivenDecoder*, std::uint32_t>;
  struct FanOut {
    std::uint32_t value;      // of the item, when it went out
    std::uint64_t serial;     // tells a fan-out from a newer one of the same item
    bool reaches_all = true;  // who is there now, and nobody was told another value meanwhile
    std::vector<Glib::RefPtr<StationProxy>> errands{};
  };

  /// What a station has not got that has left, or had left and has joined again.
  struct Missed {
    std::map<const DrivenDecoder*, std::uint32_t> items{};
    ScopedConnection deleted{};  // the station has ended, as a member or away
  };

  void for_each_in_service(const std::function<void(Device&)>& visit);
  void fan_out(DrivenDecoder* decoder, std::uint32_t bit);
  using Errand = std::pair<Item, Glib::RefPtr<StationProxy>>;
  [[nodiscard]] std::vector<Errand> errands_at(const Device& device) const;
  Missed& missed_by(Device* device);
  void forget(Device* device);
  void follow_link(Device& device);
  void go_on_without_held_up(const Item& item,
                             const std::vector<Glib::RefPtr<StationProxy>>& errands);
  void note_missing(const DrivenDecoder* decoder, std::uint32_t items);
  void abandon_let_go(const Item& item);
  void note_told(const DrivenDecoder* decoder, const DecoderUpdate& delivered);
  [[nodiscard]] bool is_on_its_way(const Item& item, std::uint32_t value) const;
  int send_errands(DrivenDecoder* decoder, const Item& item,
                   const Glib::RefPtr<DecoderProxy>& answers);

  std::set<Device*> devices_;
  std::map<Item, FanOut> newest_;  // of those not yet answered
  std::uint64_t fan_outs_ = 0;
  std::map<const Device*, std::array<ScopedConnection, 2>> members_;
  std::map<const Device*, Missed> missed_;
  /// The newest errand of each item that a station was left alone with.
  std::map<std::pair<const Device*, Item>, Glib::RefPtr<StationProxy>> let_go_;
};

}  // namespace zemblar
