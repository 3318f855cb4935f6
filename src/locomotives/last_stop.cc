#include "locomotives/last_stop.h"

#include "core/layout.h"
#include "locomotives/decoder.h"
#include "locomotives/moving_trains.h"
#include "runtime/timer.h"

namespace zemblar {
namespace {

constexpr std::chrono::milliseconds pause(250);
constexpr unsigned most_attempts = 20;

}  // namespace

LastStop::LastStop(const Decoder& decoder, Device& device) : device_(&device) {
  type_ = decoder.get_type();
  address_ = decoder.get_address();
  state_ = decoder.state();
  state_.speed = 0;
  state_.mask = DecoderUpdate::speed_bit;
}

void LastStop::send(const Decoder& decoder) {
  if (!Layout::get().is_emptying()) send_to(decoder.driving_device(), decoder);
}

void LastStop::send_to(Device& station, const Decoder& decoder) {
  if (!may_move(decoder) || !station.active()) return;
  const auto stop = Glib::RefPtr<LastStop>(new LastStop(decoder, station));
  stop->request();
}

Glib::RefPtr<LastStop> LastStop::hold() {
  reference();
  return Glib::RefPtr<LastStop>(this);
}

void LastStop::request() {
  ++attempts_;
  if (device_) device_->run_update_speed(this);
}

void LastStop::complete(const DecoderUpdate& delivered) {
  if ((delivered.mask & DecoderUpdate::speed_bit) != 0 || attempts_ >= most_attempts) return;
  Timeout::once(pause, [stop = hold()] { stop->request(); }).release();
}

}  // namespace zemblar
