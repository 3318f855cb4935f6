#include "locomotives/moving_trains.h"

#include <algorithm>

#include "core/layout.h"
#include "devices/default_device.h"
#include "locomotives/lok.h"
#include "locomotives/lok_registry.h"

namespace zemblar {
namespace {

constexpr std::chrono::milliseconds look_interval(10);

/// Whether that device, or any if it is null, is in service and drives the decoder. The default
/// device drives by all its stations.
bool drives(const Device* device, const Decoder& decoder) {
  const auto& driving = decoder.driving_device();
  const auto& defaults = Layout::get().get_default_device();
  if (&driving != &defaults) return driving.active() && (!device || device == &driving);
  return std::ranges::any_of(defaults.devices(),
                             [&](const Device* one) { return !device || device == one; });
}

bool is_commanded_to_move(const Decoder& decoder) {
  return decoder.has_speed_here() && decoder.get_speed() != 0 &&
         decoder.get_speed() != DecoderUpdate::emergency_stop;
}

/// The locomotive first, so that its throttle shows it; then what a script goes on commanding.
void stop_trains(const Device* device) {
  for_each_lok(Layout::get().get_loks(), [&](Lok& lok) {
    for (const auto& decoder : lok.get_decoders()) {
      if (!is_commanded_to_move(*decoder.operator->()) || !drives(device, *decoder.operator->())) {
        continue;
      }
      if (lok.get_speed() != 0) lok.set_speed(0);
      if (is_commanded_to_move(*decoder.operator->())) decoder->set_speed(0);
    }
  });
}

}  // namespace

bool may_move(const Decoder& decoder) {
  return is_commanded_to_move(decoder) || (decoder.state().mask & DecoderUpdate::speed_bit) != 0;
}

bool any_train_moves(const Device* device) {
  bool moves = false;
  for_each_lok(Layout::get().get_loks(), [&](const Lok& lok) {
    for (const auto& decoder : lok.get_decoders()) {
      moves = moves || (may_move(*decoder.operator->()) && drives(device, *decoder.operator->()));
    }
  });
  return moves;
}

void StandStill::begin(std::function<void()> then, const Device* device) {
  if (under_way()) return;
  if (!any_train_moves(device)) return then();
  stop_trains(device);
  const auto end = Clock::now() + patience;
  look_ = Timeout::every(look_interval, [device, end, then = std::move(then)] {
    if (any_train_moves(device) && Clock::now() < end) {
      stop_trains(device);
      return true;
    }
    const auto go_on = then;  // it may end this
    go_on();
    return false;
  });
}

}  // namespace zemblar
