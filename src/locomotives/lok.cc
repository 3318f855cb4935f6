#include "locomotives/lok.h"

#include <cassert>

#include "core/alive_guard.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/property.h"
#include "core/string_pool.h"
#include "locomotives/function.h"
#include "locomotives/script_overlay.h"

namespace zemblar {
namespace {

constexpr auto stopped = DecoderUpdate::emergency_stop;

}  // namespace

Object& as_object(Lok& lok) {
  return lok;
}

Lok::Lok(NoDecoder /*tag*/) : Glib::ObjectBase("Lok"), Object(_("Locomotive %1")), registry_(this) {
  register_property<int>(this, "top-speed", &Lok::get_top_speed, &Lok::set_top_speed);
  register_property<unsigned>(this, "speed", &Lok::get_speed, &Lok::set_speed);
  register_property<bool>(this, "emergency-stop", &Lok::get_emergency_stop,
                          &Lok::set_emergency_stop);
  register_property<Direction>(this, "direction", &Lok::get_direction, &Lok::set_direction);
  register_property<bool>(this, "brake", &Lok::get_brake, &Lok::set_brake);
  register_property<int>(this, "actual-speed", &Lok::get_actual_speed);
  register_property<unsigned>(this, "speed-overlay", &Lok::get_speed_overlay);
  register_property<Direction>(this, "direction-overlay", &Lok::get_direction_overlay);
}

Lok::Lok() : Lok(NoDecoder{}) {
  adopt(Decoder::create());
  registry_.update(decoders_);
}

Lok::~Lok() {
  leave_track();
  registry_.clear();
  ScriptOverlay::forget(this);
  for (const auto& decoder : decoders_) decoder->retire();
  for (const auto& [key, value] : attributes_) attribute_strings().remove(key, value);
}

void Lok::on_deleting() {
  // From now on the locomotive must not be found by an address or on the track.
  registry_.clear();
  leave_track();
}

void Lok::announce(std::initializer_list<Change> changes) {
  const AliveGuard alive(*this);
  for (const auto& change : changes) {
    notify_property(*this, change.property);
    if (alive && change.signal) (this->*change.signal).emit();
    if (!alive) return;
  }
}

sigc::signal<void, Lok&>& Lok::signal_condition_changed() {
  static auto* signal = new sigc::signal<void, Lok&>;  // never destroyed: layouts end at exit
  return *signal;
}

bool Lok::can_contain(Object* child) const {
  const auto* function = dynamic_cast<const Function*>(child);
  return function && function->get_lok() == this;
}

// --- Speed ---

template <typename Command>
void Lok::send(const Command& command) {
  const auto decoders = decoders_;  // a copy, since a handler may remove a decoder
  for (const auto& decoder : decoders) command(*decoder.operator->());
}

void Lok::send_speed(unsigned speed) {
  send([speed](Decoder& decoder) { decoder.set_speed(speed); });
}

void Lok::compute_and_send_speed() {
  speed_overlay_ = ScriptOverlay::apply(this, speed_);
  send_speed(speed_overlay_);
}

// For a brake that is about to be released: computes what was set under it.
void Lok::renew_speed() {
  speed_overlay_ = ScriptOverlay::apply(this, speed_);
  notify_property(*this, "speed-overlay");
}

unsigned Lok::get_speed() const {
  return speed_ == stopped ? 0 : speed_;
}

unsigned Lok::get_speed_overlay() const {
  return speed_overlay_ == stopped ? 0 : speed_overlay_;
}

bool Lok::get_emergency_stop() const {
  return speed_ == stopped;
}

void Lok::set_speed(unsigned speed) {
  assert(speed <= 126);
  if (speed == speed_) return;
  speed_ = speed;
  const AliveGuard alive(*this);
  if (!brake_) compute_and_send_speed();
  announce({{"speed", &Lok::signal_speed_changed_},
            {"speed-overlay"},
            {"emergency-stop", &Lok::signal_emergency_stop_changed_}});
  if (alive) signal_condition_changed().emit(*this);
}

void Lok::set_emergency_stop(bool on) {
  if (on == get_emergency_stop()) return;
  const Change emergency{"emergency-stop", &Lok::signal_emergency_stop_changed_};
  const AliveGuard alive(*this);
  speed_ = speed_overlay_ = on ? stopped : 0;
  if (on) {
    send_speed(stopped);
    announce({{"speed", &Lok::signal_speed_changed_}, {"speed-overlay"}, emergency});
  } else if (brake_) {
    announce({emergency});
  } else {
    compute_and_send_speed();
    announce({{"speed-overlay"}, emergency});
  }
  if (alive) signal_condition_changed().emit(*this);
}

void Lok::set_brake(bool brake) {
  if (brake == brake_) return;
  brake_ = brake;
  const AliveGuard alive(*this);
  announce({{"brake", &Lok::signal_brake_changed_}});
  if (alive) send_speed(brake_ ? 0 : speed_overlay_);
  if (alive) signal_condition_changed().emit(*this);
}

void Lok::apply_speed_overlay() {
  if (brake_) return;
  const AliveGuard alive(*this);
  compute_and_send_speed();
  notify_property(*this, "speed-overlay");
  if (alive) signal_condition_changed().emit(*this);
}

// --- Direction ---

void Lok::turn_round(Direction direction) {
  reverse_place();
  send([direction](Decoder& decoder) { decoder.set_direction(direction); });
}

void Lok::set_direction(Direction direction) {
  if (direction == direction_) return;
  direction_ = direction;
  const auto in_force = ScriptOverlay::apply(this, direction);
  if (in_force == direction_overlay_) return;
  direction_overlay_ = in_force;
  turn_round(in_force);
  announce({{"direction", &Lok::signal_direction_changed_},
            {"direction-overlay", &Lok::signal_direction_overlay_changed_}});
}

void Lok::apply_direction_overlay() {
  const auto in_force = ScriptOverlay::apply(this, direction_);
  if (in_force == direction_overlay_) return;
  turn_round(in_force);
  announce({{"direction-overlay", &Lok::signal_direction_overlay_changed_}});
}

// --- What it is and what is reported ---

void Lok::set_top_speed(int top_speed) {
  if (top_speed == top_speed_) return;
  before_change();
  top_speed_ = top_speed;
  announce({{"top-speed", &Lok::signal_top_speed_changed_}});
}

void Lok::set_actual_speed(unsigned char raw) {
  const int step = raw * 126 / 127;
  const int speed = step == 0 ? 0 : step > 126 ? 126 : step - 1;
  if (speed == actual_speed_) return;
  actual_speed_ = speed;
  announce({{"actual-speed", &Lok::signal_actual_speed_changed_}});
}

// --- Decoders ---

void Lok::adopt(const Glib::RefPtr<Decoder>& decoder) {
  decoders_.push_back(decoder);
  decoder->signal_changing().connect(sigc::mem_fun(*this, &Lok::before_change));
  decoder->signal_changed().connect(sigc::track_obj(
      [this] {
        if (!is_deleting()) registry_.update(decoders_);
      },
      *this));
}

Decoder& Lok::add_decoder() {
  before_change();
  adopt(Decoder::create());
  registry_.update(decoders_);
  signal_decoders_changed_.emit();
  return *decoders_.back().operator->();
}

void Lok::remove_decoder(unsigned index) {
  if (index >= decoders_.size() || decoders_.size() == 1) return;
  before_change();
  const auto removed = decoders_[index];
  decoders_.erase(decoders_.begin() + index);
  removed->retire();
  registry_.update(decoders_);
  for (auto* child : *this) {
    if (auto* function = dynamic_cast<Function*>(child)) function->on_decoder_removed(index);
  }
  signal_decoders_changed_.emit();
}

bool Lok::has_address(Address address) const {
  for (const auto& decoder : decoders_) {
    if (decoder->get_address() == address) return true;
  }
  return false;
}

// --- Attributes ---

void Lok::set_attribute(const Glib::ustring& key, const Glib::ustring& value) {
  const auto present = attributes_.find(key.raw());
  if (present != attributes_.end() && present->second == value.raw()) return;
  before_change();
  attribute_strings().add(key, value);
  const auto [entry, is_new] = attributes_.try_emplace(key.raw(), value.raw());
  if (!is_new) {
    attribute_strings().remove(key, entry->second);
    entry->second = value.raw();
  }
  signal_attribute_changed_.emit(key);
}

void Lok::remove_attribute(const Glib::ustring& key) {
  const auto entry = attributes_.find(key.raw());
  if (entry == attributes_.end()) return;
  before_change();
  attribute_strings().remove(key, entry->second);
  attributes_.erase(entry);
  signal_attribute_changed_.emit(key);
}

}  // namespace zemblar
