#include "devices/device.h"

#include <algorithm>
#include <utility>

#include "core/document_class.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/property.h"
#include "runtime/fiber.h"

namespace zemblar {
namespace {

const auto accepted_by_devices = toplevel_accepts_class<Device>(Section::devices);

Glib::RefPtr<DrivenDecoder> hold(DrivenDecoder* decoder) {
  decoder->reference();
  return Glib::RefPtr<DrivenDecoder>(decoder);
}

/// Toolkit code calls this: nothing may be thrown through it.
void request_active(Device& device, bool on) {
  on ? device.set_active(true) : device.go_out_of_service();
}

}  // namespace

Device::Device(const Glib::ustring& name_format) : Object(name_format) {
  link_.since = Clock::now();
  register_property<bool>(this, "active", &Device::get_active, request_active);
  register_property<bool>(this, "track-power", &Device::track_power, &Device::set_track_power);
}

Device::~Device() {
  leave_service_for_good();
}

void Device::on_deleting() {
  leave_service_for_good();
  wake_waiters();
}

void Device::leave_service_for_good() {
  link_note_.take_back();
  active_ = false;
  activating_ = false;
  release(round_);
}

const Layout* Device::layout() const {
  const auto ancestors = get_ancestors();
  const auto* root = ancestors.empty() ? nullptr : dynamic_cast<Layout*>(ancestors.back());
  if (root) return root;
  return Layout::exists() ? &Layout::get() : nullptr;
}

// --- In and out of service ---

void Device::set_active(bool on) {
  if (on == active_ || (on && is_deleting())) return;
  if (active_ && activating_) throw DeviceInactiveException();
  if (on) {
    fiber::spawn([this] { activate(); });
  } else {
    fiber::spawn([this] { deactivate(); });
  }
}

void Device::go_out_of_service() {
  if (!activating_) set_active(false);
}

void Device::enter_service() {
  active_ = true;
  set_link(LinkPhase::in_service);
}

void Device::activate() {
  const auto alive = liveness();
  activating_ = true;
  active_ = true;
  if (!run_start() || !*alive) return;
  set_link(LinkPhase::in_service);
  if (*alive) notify_property(*this, "active");
  if (*alive && active_) signal_in_service().emit(*this);
}

// Whoever asks for an operation while `start` runs waits for the lock, and finds the device out of
// service when `start` has failed.
bool Device::run_start() {
  const auto alive = liveness();
  bool started = false;
  try {
    BusyLock lock(this, true);
    started = try_start();
    if (!*alive) return false;
    activating_ = false;
    if (!started) active_ = false;
  } catch (const DeviceInactiveException&) {
    // Destroyed while an older conversation still had the lock.
    return false;
  }
  return started;
}

bool Device::try_start() {
  try {
    return start();
  } catch (...) {
    return false;
  }
}

void Device::deactivate() {
  const auto alive = liveness();
  const auto round = round_;
  active_ = false;
  activating_ = false;
  // A driver that knows why has said so before.
  if (link_.phase == LinkPhase::in_service || link_.phase == LinkPhase::waiting_for_answer) {
    set_link(LinkPhase::lost);
  }
  if (!*alive) return;
  try {
    stop();
  } catch (...) {
    // Out of service all the same.
  }
  if (*alive) release(round);
  if (*alive) wake_waiters();
  if (*alive) notify_property(*this, "active");
}

sigc::signal<void, Device&>& Device::signal_in_service() {
  static sigc::signal<void, Device&> signal;
  return signal;
}

// --- The link ---

void Device::set_link(LinkPhase phase, const Glib::ustring& why) {
  if (is_deleting() || (phase == link_.phase && why.raw() == link_.why.raw())) return;
  const auto former = link_.phase;
  if (phase != former) link_.since = Clock::now();
  link_.phase = phase;
  link_.why = why;
  was_in_service_ = was_in_service_ || phase == LinkPhase::in_service;
  const auto alive = liveness();
  tell_link();
  const bool answers_again =
      former == LinkPhase::waiting_for_answer && phase == LinkPhase::in_service;
  if (*alive && answers_again && get_status().empty()) {
    set_status(Glib::ustring::compose(_("%1 answers again."), get_name()));
  }
  if (*alive) signal_link_changed_.emit();
}

void Device::set_link_down(const Glib::ustring& why) {
  set_link(was_in_service_ ? LinkPhase::lost : LinkPhase::connecting, why);
}

void Device::tell_link() {
  const bool silent = link_.phase == LinkPhase::in_service ||
                      link_.phase == LinkPhase::looking_for_hardware || link_.why.empty();
  if (silent) {
    link_note_.take_back();
  } else if (link_.phase == LinkPhase::lost || link_.phase == LinkPhase::waiting_for_answer) {
    link_note_.tell(link_.why);
  } else {
    link_note_.offer(link_.why);
  }
}

// --- Track power ---

void Device::set_track_power(bool on) {
  if (on != track_power_) run_power(on);
}

void Device::track_power_is_on() {
  track_power_ = true;
  notify_property(*this, "track-power");
}

void Device::track_power_is_off() {
  track_power_ = false;
  notify_property(*this, "track-power");
}

// --- Operations on fibers of their own ---

void Device::run_power(bool on) {
  if (!active_) return;
  fiber::spawn([this, on] { on ? power_on() : power_off(); });
}

void Device::run_update_speed(DrivenDecoder* decoder) {
  if (!active_ || !reaches(*decoder)) return;
  fiber::spawn([this, held = hold(decoder)] { update_speed(held.operator->()); });
}

void Device::run_update_direction(DrivenDecoder* decoder) {
  if (!active_ || !reaches(*decoder)) return;
  fiber::spawn([this, held = hold(decoder)] { update_direction(held.operator->()); });
}

void Device::run_update_function(DrivenDecoder* decoder, unsigned fn) {
  if (!active_ || !reaches(*decoder)) return;
  fiber::spawn([this, held = hold(decoder), fn] { update_function(held.operator->(), fn); });
}

void Device::run_set_point(unsigned address, unsigned output, bool on) {
  if (!active_) return;
  fiber::spawn([this, address, output, on] { set_point(address, output, on); });
}

void Device::run_set_aspect(unsigned address, unsigned aspect) {
  if (!active_) return;
  fiber::spawn([this, address, aspect] { set_aspect(address, aspect); });
}

int Device::supports(std::string_view /*feature*/) const {
  return 0;
}

// --- Locomotives by address ---

bool Device::add_lok(Address address, Lok* lok) {
  return loks_.emplace(address, lok).second;
}

void Device::remove_lok(Address address, Lok* lok) {
  const auto found = loks_.find(address);
  if (found != loks_.end() && found->second == lok) loks_.erase(found);
}

Lok* Device::find_lok(Address address) const {
  const auto found = loks_.find(address);
  return found == loks_.end() ? nullptr : found->second;
}

// --- Decoder updates ---

bool Device::join_pending(DrivenDecoder* decoder) {
  const bool first = pending_.empty();
  const bool known = std::ranges::any_of(
      pending_, [decoder](const auto& held) { return held.operator->() == decoder; });
  if (!known) pending_.push_back(hold(decoder));
  return first;
}

Device::Pending Device::take_pending() {
  ++round_;
  return std::exchange(pending_, {});
}

// The answers may ask for the next updates, destroy decoders, or destroy the device.
void Device::finish_update(DrivenDecoder* decoder, const DecoderUpdate& delivered) {
  const auto answered = hold(decoder);
  for (const auto& waiting : take_pending()) {
    if (waiting != answered) waiting->complete({});
  }
  answered->complete(delivered);
}

void Device::release(Round round) {
  if (round != round_) return;
  for (const auto& waiting : take_pending()) waiting->complete({});
}

DecoderTask::DecoderTask(Device* device, DrivenDecoder* decoder)
    : device_(device),
      decoder_(hold(decoder)),
      alive_(device->liveness()),
      leads_(device->join_pending(decoder)),
      round_(device->round_) {}

DecoderTask::~DecoderTask() {
  if (leads_ && *alive_) device_->release(round_);
}

void DecoderTask::finish(const DecoderUpdate& delivered) {
  if (!*alive_ || round_ != device_->round_) return;
  device_->finish_update(decoder_.operator->(), delivered);
}

}  // namespace zemblar
