#include "simulator/trains/track_station.h"

#include "core/layout.h"
#include "devices/default_device.h"
#include "runtime/timer.h"
#include "simulator/trains/track_model.h"

namespace zemblar::simulator {

TrackStation::TrackStation(TrackModel& model)
    : Glib::ObjectBase("TrackStation"), Device("Station in Memory %1"), model_(model) {
  enter_service();
}

TrackStation* TrackStation::in_service(TrackModel& model) {
  auto& layout = Layout::get();
  auto* station = layout.get_devices().add(new TrackStation(model));
  layout.get_default_device().add_device(station);
  return station;
}

void TrackStation::save(YAML::Emitter& /*out*/) const {}

int TrackStation::supports(std::string_view feature) const {
  return feature.starts_with("DCC") ? 2 : 0;
}

void TrackStation::update_speed(DrivenDecoder* decoder) {
  command(decoder, DecoderUpdate::speed_bit);
}

void TrackStation::update_direction(DrivenDecoder* decoder) {
  command(decoder, DecoderUpdate::direction_bit);
}

// A packet carries both, so both are sent for either.
void TrackStation::command(DrivenDecoder* decoder, std::uint32_t item) {
  DecoderTask task(this, decoder);
  if (!task.leads()) return;
  const auto alive = liveness();
  if (delay.count() > 0) sleep_for(delay);
  if (!*alive) return;
  auto sent = decoder->state();
  sent.mask = item;
  const auto address = decoder->get_address().get_addr();
  if (sent.speed == DecoderUpdate::emergency_stop) {
    model_.emergency_stop(address);
  } else {
    model_.command(address, sent.speed, sent.direction == Direction::Forwards);
  }
  if (*alive) task.finish(sent);
}

}  // namespace zemblar::simulator
