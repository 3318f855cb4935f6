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
/// There is one per layout, a member of the Layout and not a child of its devices; it is always
/// active. Stations join when they come into service and leave when they go out of service. A
/// decoder update is fanned out through a DecoderProxy and answered when all stations have
/// answered. Without a station in service it is not answered, so the decoder stays out of date and
/// tries again when a station joins.
///
/// Each station gets a StationProxy, an errand, which asks again until the station has delivered
/// the value. So a station that does not answer or refuses does not hold up others. The items that
/// a station has not delivered when it leaves, and those commanded while it is away, are remembered
/// until it joins again. A fan-out ends early when a newer one of the same decoder and item begins,
/// so that only the newest waits at a station.
///
/// A fan-out is skipped if the newest unanswered one of the same decoder and item has the same
/// value and went to all present members. So a burst of changes costs one command each, not one for
/// each pair.
class DefaultDevice : public Device {
 public:
  DefaultDevice();

  void add_device(Device* device);
  void remove_device(Device* device);
  [[nodiscard]] const std::set<Device*>& devices() const { return devices_; }
  /// The items of the decoder that the station has missed while it was away, or that never reached
  /// it; all for a station that has never been a member. Clears the record.
  [[nodiscard]] std::uint32_t take_missed(const Device& device, const DrivenDecoder& decoder);

  /// Records that the station was sent other values of these items than the decoder wants. It gets
  /// the wanted values when it joins again.
  void note_not_told(Device& device, const DrivenDecoder& decoder, std::uint32_t items) {
    missed_by(&device).items[&decoder] |= items;
  }

  /// 2 if every station fully supports the feature, 1 if some station supports it, 0 if none does
  /// or there is no station.
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
  /// The decoder, and the bit of DecoderUpdate that is sent to it.
  using Item = std::pair<const DrivenDecoder*, std::uint32_t>;
  struct FanOut {
    std::uint32_t value;      // value of the item when the fan-out began
    std::uint64_t serial;     // distinguishes a fan-out from a newer one of the same item
    bool reaches_all = true;  // all present members have it, and none was sent another value since
    std::vector<Glib::RefPtr<StationProxy>> errands{};
  };

  /// The items that a station has missed, which has left at least once.
  struct Missed {
    std::map<const DrivenDecoder*, std::uint32_t> items{};
    ScopedConnection deleted{};  // watches the end of the station
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
  void note_sent(const DrivenDecoder* decoder, const DecoderUpdate& delivered);
  [[nodiscard]] bool is_on_its_way(const Item& item, std::uint32_t value) const;
  int send_errands(DrivenDecoder* decoder, const Item& item,
                   const Glib::RefPtr<DecoderProxy>& answers);

  std::set<Device*> devices_;
  std::map<Item, FanOut> newest_;  // the newest unanswered fan-out of each item
  std::uint64_t fan_outs_ = 0;
  std::map<const Device*, std::array<ScopedConnection, 2>> members_;
  std::map<const Device*, Missed> missed_;
  /// The newest errand of each item that a fan-out has left waiting at a station.
  std::map<std::pair<const Device*, Item>, Glib::RefPtr<StationProxy>> let_go_;
};

}  // namespace zemblar
