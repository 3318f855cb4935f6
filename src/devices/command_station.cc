#include "devices/command_station.h"

#include "core/entry_change.h"
#include "core/layout.h"
#include "core/property.h"
#include "devices/default_device.h"

namespace zemblar {
namespace {

constexpr std::chrono::seconds power_retry_time(1);

}  // namespace

CommandStation::CommandStation(const Glib::ustring& name_format, const char* default_property)
    : Device(name_format), default_property_(default_property) {
  register_property<bool>(this, default_property, &CommandStation::get_use_as_default,
                          &CommandStation::set_use_as_default);
}

void CommandStation::on_deleting() {
  power_retry_.cancel();
  leave_default();
  Device::on_deleting();
}

sigc::signal<void, Device&>& CommandStation::signal_leaving_default() {
  static auto* signal = new sigc::signal<void, Device&>;
  return *signal;
}

void CommandStation::set_use_as_default(bool on) {
  if (on == use_as_default_) return;
  before_change();
  if (!on) signal_leaving_default().emit(*this);
  use_as_default_ = on;
  on ? join_default() : leave_default();
  notify_property(*this, default_property_);
  // Makes decoders try again that no station has served until now.
  if (on && active()) signal_in_service().emit(*this);
}

void CommandStation::restore(const EntryChange& change) {
  Device::restore(change);
  change.read<bool>("use-as-default", [this](bool on) { set_use_as_default(on); });
}

void CommandStation::join_default() {
  if (!use_as_default_) return;
  if (auto* device = default_device()) device->add_device(this);
}

void CommandStation::leave_default() {
  if (auto* device = default_device()) device->remove_device(this);
}

DefaultDevice* CommandStation::default_device() const {
  const auto* layout = this->layout();
  return layout ? &layout->get_default_device() : nullptr;
}

// --- Talking ---

void CommandStation::converse(const std::function<void()>& talk) {
  const auto alive = liveness();
  BusyLock lock(this, true);
  try {
    talk_in_turn(talk);
  } catch (...) {
    if (*alive) on_failed_talk();
    throw;
  }
}

void CommandStation::talk_in_turn(const std::function<void()>& talk) {
  const auto alive = liveness();
  send_stops();
  if (!*alive || !active()) throw DeviceInactiveException();
  talk();
}

// Sends each stop once, so that a locomotive without an answer does not block others. Switching the
// power off is sent before each stop, because each may take a while.
void CommandStation::send_stops() {
  const auto alive = liveness();
  Decoders tried;
  while (*alive) {
    send_power_off();
    const auto decoder = *alive ? waiting_stop(tried) : Glib::RefPtr<DrivenDecoder>();
    if (!decoder) return;
    tried.push_back(decoder);
    send_stop(decoder);
  }
}

void CommandStation::send_stop(const Glib::RefPtr<DrivenDecoder>& decoder) {
  const auto alive = liveness();
  DecoderUpdate delivered;
  try {
    delivered = deliver(*decoder.operator->(), DecoderUpdate::speed_bit);
  } catch (...) {
    if (*alive) on_failed_talk();
    if (!*alive || !active()) throw;
  }
  if (*alive) answer_early(decoder, delivered);
}

// --- What the railway asks for ---

void CommandStation::update(DrivenDecoder* decoder, std::uint32_t item) {
  DecoderTask task(this, decoder);
  if (!task.leads()) return;
  converse([&] {
    // Another conversation may have sent the item, or the wish may have changed.
    const bool is_due = !task.is_answered() && (decoder->state().mask & item) != 0;
    if (is_due) task.finish(deliver(*decoder, item));
  });
}

void CommandStation::update_speed(DrivenDecoder* decoder) {
  update(decoder, DecoderUpdate::speed_bit);
}

void CommandStation::update_direction(DrivenDecoder* decoder) {
  update(decoder, DecoderUpdate::direction_bit);
}

void CommandStation::update_function(DrivenDecoder* decoder, unsigned fn) {
  update(decoder, DecoderUpdate::function_bit(fn));
}

std::optional<bool> CommandStation::coming_track_power() const {
  if (due_power_ || power_is_unknown_) return due_power_;
  return track_power();
}

void CommandStation::remember_power(bool on) {
  ++power_wishes_;
  due_power_.reset();
  if (!on) due_power_ = false;
}

void CommandStation::settle_power(unsigned wish) {
  if (wish == power_wishes_) due_power_.reset();
}

void CommandStation::power_on() {
  const auto alive = liveness();
  const auto wish = ++power_wishes_;
  due_power_ = true;
  try {
    converse([&] {
      if (wish != power_wishes_) return;
      power_is_unknown_ = true;
      switch_power(true);
      if (*alive) power_is_unknown_ = false;
    });
  } catch (...) {
    if (*alive) settle_power(wish);
    throw;
  }
  if (*alive) settle_power(wish);
}

void CommandStation::power_off() {
  ++power_wishes_;
  due_power_ = false;
  power_retry_.cancel();
  converse([] {});
}

// Any answer of the station settles the wish. Without an answer it is tried again, but only after
// other conversations; after a loss of service, as soon as the station is back.
void CommandStation::send_power_off() {
  if (!power_off_is_due() || power_retry_.armed()) return;
  const auto alive = liveness();
  const auto wish = power_wishes_;
  try {
    switch_power(false);
  } catch (...) {
    if (*alive) on_failed_talk();
    if (!*alive || !active()) throw;
    power_retry_ = Timeout::once(power_retry_time, [this] { send_due_power_off(); });
    return;
  }
  if (!*alive) return;
  power_is_unknown_ = false;
  settle_power(wish);
}

void CommandStation::on_in_service() {
  power_retry_.cancel();
  send_due_power_off();
}

void CommandStation::send_due_power_off() {
  if (power_off_is_due()) run_power(false);
}

int CommandStation::supports(std::string_view feature) const {
  if (feature == "DCC/Power") return 2;
  return feature == "DCC" || feature.starts_with("DCC/") ? 1 : 0;
}

}  // namespace zemblar
