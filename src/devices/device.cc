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

/// Must not throw, because toolkit code calls it.
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
  link_note_.clear();
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
  // Fibers that waited for the lock have run meanwhile, and may have found that the link is lost.
  if (!run_start() || !*alive || !active_) return;
  catching_up_ = true;
  set_link(LinkPhase::in_service);
  if (*alive) on_in_service();
  if (*alive) notify_property(*this, "active");
  if (*alive && active_) signal_in_service().emit(*this);
}

// An operation that is requested while `start` runs waits for the lock, and finds the device out of
// service if `start` fails.
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
    // The device was destroyed while an older conversation had the lock.
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
  // A driver that knows the reason has set the link before.
  if (link_.phase == LinkPhase::in_service || link_.phase == LinkPhase::waiting_for_answer) {
    set_link(LinkPhase::lost);
  }
  if (!*alive) return;
  try {
    stop();
  } catch (...) {
    // The device is out of service nevertheless.
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

void Device::set_link(LinkPhase phase, const Glib::ustring& why, Clock::time_point since) {
  if (is_deleting() || (phase == link_.phase && why.raw() == link_.why.raw())) return;
  const auto former = link_.phase;
  if (phase != former) link_.since = since;
  link_.phase = phase;
  link_.why = why;
  was_in_service_ = was_in_service_ || phase == LinkPhase::in_service;
  const auto alive = liveness();
  report_link();
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

void Device::report_link() {
  const bool silent = link_.phase == LinkPhase::in_service ||
                      link_.phase == LinkPhase::looking_for_hardware || link_.why.empty();
  if (silent) {
    link_note_.clear();
  } else if (link_.phase == LinkPhase::lost || link_.phase == LinkPhase::waiting_for_answer) {
    link_note_.show(link_.why);
  } else {
    link_note_.show_when_free(link_.why);
  }
}

// --- Track power ---

void Device::set_track_power(bool on) {
  if (!active_) return remember_power(on);
  if (on != coming_track_power()) run_power(on);
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

template <typename Operation>
void Device::begin_update(DrivenDecoder* decoder, std::uint32_t item, Operation operation) {
  if (!active_ || !can_address(*decoder) || withholds(*decoder, item)) return;
  fiber::spawn([held = hold(decoder), operation] { operation(held.operator->()); });
}

void Device::run_update_speed(DrivenDecoder* decoder) {
  begin_update(decoder, DecoderUpdate::speed_bit,
               [this](DrivenDecoder* held) { update_speed(held); });
}

void Device::run_update_direction(DrivenDecoder* decoder) {
  begin_update(decoder, DecoderUpdate::direction_bit,
               [this](DrivenDecoder* held) { update_direction(held); });
}

void Device::run_update_function(DrivenDecoder* decoder, unsigned fn) {
  begin_update(decoder, DecoderUpdate::function_bit(fn),
               [this, fn](DrivenDecoder* held) { update_function(held, fn); });
}

void Device::run_update(DrivenDecoder* decoder, std::uint32_t item) {
  if (item == DecoderUpdate::speed_bit) return run_update_speed(decoder);
  if (item == DecoderUpdate::direction_bit) return run_update_direction(decoder);
  run_update_function(decoder, DecoderUpdate::function_of(item));
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
      pending_, [decoder](const auto& waiting) { return waiting.decoder.operator->() == decoder; });
  if (!known) pending_.push_back({hold(decoder), ++last_ticket_});
  return first;
}

bool Device::is_waiting(std::uint64_t ticket) const {
  return std::ranges::any_of(pending_,
                             [ticket](const auto& waiting) { return waiting.ticket == ticket; });
}

unsigned Device::rank(const DrivenDecoder& decoder) const {
  return static_cast<unsigned>(urgency_of(decoder.state()));
}

// Decoders ask again in the order in which they are answered.
Device::Pending Device::take_pending() {
  ++round_;
  auto taken = std::exchange(pending_, {});
  if (catching_up_ && taken.size() > 1) {
    std::ranges::stable_sort(
        taken, {}, [this](const auto& waiting) { return rank(*waiting.decoder.operator->()); });
  }
  return taken;
}

// A call of `complete` may request the next update, destroy decoders, or destroy the device.
void Device::finish_update(DrivenDecoder* decoder, const DecoderUpdate& delivered) {
  const auto answered = hold(decoder);
  const auto waiting = take_pending();
  if (waiting.size() <= 1) catching_up_ = false;
  for (const auto& [other, ticket] : waiting) {
    if (other != answered) other->complete({});
  }
  answered->complete(delivered);
}

Glib::RefPtr<DrivenDecoder> Device::waiting_stop(
    const std::vector<Glib::RefPtr<DrivenDecoder>>& tried) const {
  const Waiting* first = nullptr;
  for (const auto& one : pending_) {
    const auto& decoder = one.decoder;
    const auto same = [&](const auto& other) { return &other->origin() == &decoder->origin(); };
    if (!decoder->state().is_stop() || std::ranges::any_of(tried, same)) continue;
    if (!first || rank(*decoder.operator->()) < rank(*first->decoder.operator->())) first = &one;
  }
  return first ? first->decoder : Glib::RefPtr<DrivenDecoder>();
}

void Device::answer_early(const Glib::RefPtr<DrivenDecoder>& decoder,
                          const DecoderUpdate& delivered) {
  const auto erased =
      std::erase_if(pending_, [&](const auto& waiting) { return waiting.decoder == decoder; });
  if (erased == 0) return;
  if (pending_.empty()) ++round_;
  decoder->complete(delivered);
}

void Device::release(Round round) {
  if (round != round_) return;
  for (const auto& [waiting, ticket] : take_pending()) waiting->complete({});
}

void Device::release_after_failure(Round round, std::uint64_t failed) {
  if (round != round_) return;
  catching_up_ = false;
  auto waiting = take_pending();
  std::stable_partition(waiting.begin(), waiting.end(),
                        [&](const auto& one) { return one.ticket != failed; });
  for (const auto& [decoder, ticket] : waiting) decoder->complete({});
}

DecoderTask::DecoderTask(Device* device, DrivenDecoder* decoder)
    : device_(device),
      decoder_(hold(decoder)),
      alive_(device->liveness()),
      leads_(device->join_pending(decoder)),
      round_(device->round_),
      ticket_(device->last_ticket_) {}

DecoderTask::~DecoderTask() {
  if (leads_ && *alive_) device_->release_after_failure(round_, ticket_);
}

bool DecoderTask::is_answered() const {
  return !*alive_ || round_ != device_->round_ || !device_->is_waiting(ticket_);
}

void DecoderTask::finish(const DecoderUpdate& delivered) {
  if (!*alive_ || round_ != device_->round_) return;
  device_->finish_update(decoder_.operator->(), delivered);
}

}  // namespace zemblar
