#include "locomotives/moving_trains.h"

#include <algorithm>
#include <set>

#include "core/layout.h"
#include "devices/default_device.h"
#include "locomotives/last_stop.h"
#include "locomotives/lok.h"
#include "locomotives/lok_registry.h"

namespace zemblar {
namespace {

constexpr std::chrono::milliseconds poll_interval(10);

using Visit = std::function<void(Lok& lok, Decoder& decoder)>;

void for_each_decoder(const Visit& visit) {
  for_each_lok(Layout::get().get_loks(), [&](Lok& lok) {
    for (const auto& decoder : lok.get_decoders()) visit(lok, *decoder.operator->());
  });
}

bool is_in_default_use(const Device& device) {
  return Layout::get().get_default_device().devices().contains(const_cast<Device*>(&device));
}

/// True if `device`, or any device if it is null, is in service and drives the decoder. The default
/// device drives a decoder through all its stations.
bool drives(const Device* device, const Decoder& decoder) {
  const auto& driving = decoder.driving_device();
  const auto& defaults = Layout::get().get_default_device();
  if (&driving != &defaults) return driving.active() && (!device || device == &driving);
  return device ? is_in_default_use(*device) : !defaults.devices().empty();
}

bool is_commanded_to_move(const Decoder& decoder) {
  return decoder.has_speed_here() && decoder.get_speed() != 0 &&
         decoder.get_speed() != DecoderUpdate::emergency_stop;
}

/// Stops the locomotive first, so that its throttle shows it, then the decoder, which a script may
/// still be commanding.
void stop_trains(const Device* device) {
  for_each_decoder([&](Lok& lok, Decoder& decoder) {
    if (!is_commanded_to_move(decoder) || !drives(device, decoder)) return;
    if (lok.get_speed() != 0) lok.set_speed(0);
    if (is_commanded_to_move(decoder)) decoder.set_speed(0);
  });
}

}  // namespace

bool may_move(const Decoder& decoder) {
  return is_commanded_to_move(decoder) || (decoder.state().mask & DecoderUpdate::speed_bit) != 0;
}

bool may_move(const Lok& lok) {
  return std::ranges::any_of(lok.get_decoders(),
                             [](const auto& decoder) { return may_move(*decoder.operator->()); });
}

bool any_train_may_move() {
  bool any = false;
  for_each_decoder([&](const Lok&, const Decoder& decoder) { any = any || may_move(decoder); });
  return any;
}

bool any_train_moves(const Device* device) {
  bool any = false;
  for_each_decoder([&](const Lok&, const Decoder& decoder) {
    any = any || (may_move(decoder) && drives(device, decoder));
  });
  return any;
}

// Includes locomotives that stand or are in an emergency stop: a hand-held throttle of the station
// may be driving them.
void emergency_stop_all() {
  std::set<const Lok*> stopped;
  for (const bool moving : {true, false}) {
    for_each_lok(Layout::get().get_loks(), [&](Lok& lok) {
      if ((moving && !may_move(lok)) || !stopped.insert(&lok).second) return;
      if (!lok.get_emergency_stop()) return lok.set_emergency_stop(true);
      for (const auto& decoder : lok.get_decoders()) {
        decoder->set_speed(DecoderUpdate::emergency_stop);
      }
    });
  }
}

void stop_before_leaving_default(Device& station) {
  if (Layout::get().is_emptying() || !is_in_default_use(station)) return;
  auto& defaults = Layout::get().get_default_device();
  for_each_decoder([&](const Lok&, const Decoder& decoder) {
    if (decoder.get_device()) return;
    if (may_move(decoder)) defaults.note_not_told(station, decoder, DecoderUpdate::speed_bit);
    LastStop::send_to(station, decoder);
  });
}

bool StandStill::begin(std::function<void()> then, const Device* device) {
  if (under_way()) return false;
  if (!any_train_moves(device)) {
    then();
    return true;
  }
  stop_trains(device);
  const auto end = Clock::now() + answer_limit;
  poll_timer_ = Timeout::every(poll_interval, [device, end, then = std::move(then)] {
    if (any_train_moves(device) && Clock::now() < end) {
      stop_trains(device);
      return true;
    }
    const auto go_on = then;  // a copy, since the call may destroy this object
    go_on();
    return false;
  });
  return true;
}

}  // namespace zemblar
