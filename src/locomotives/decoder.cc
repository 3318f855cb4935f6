#include "locomotives/decoder.h"

#include <yaml-cpp/yaml.h>

#include <array>
#include <cassert>
#include <cmath>
#include <stdexcept>

#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/private_form.h"
#include "core/yaml_io.h"
#include "devices/default_device.h"

namespace zemblar {
namespace {

constexpr std::array<const char*, 4> type_words = {"DCC 14", "DCC 27", "DCC 28", "DCC 128"};

/// In the private form: the value of `speed` while commands are disabled.
constexpr auto disabled_key = "disabled-speed";

DecoderType type_of(const std::string& word) {
  for (std::size_t i = 0; i < type_words.size(); ++i) {
    if (word == type_words[i]) return static_cast<DecoderType>(i);
  }
  throw std::runtime_error("Invalid Decoder Type");
}

}  // namespace

Glib::ustring display_name(DecoderType type) {
  switch (type) {
    case DecoderType::dcc14:
      return _("DCC (14 Speed Steps)");
    case DecoderType::dcc27:
      return _("DCC (27 Speed Steps)");
    case DecoderType::dcc28:
      return _("DCC (28 Speed Steps)");
    case DecoderType::dcc128:
      return _("DCC (128 Speed Steps)");
  }
  return {};
}

Glib::RefPtr<Decoder> Decoder::create() {
  return Glib::RefPtr<Decoder>(new Decoder);
}

Glib::RefPtr<Decoder> Decoder::create(const YAML::Node& node) {
  return Glib::RefPtr<Decoder>(new Decoder(node));
}

Decoder::Decoder() : Glib::ObjectBase("Decoder") {}

Decoder::Decoder(const YAML::Node& node) : Decoder() {
  if (const auto type = node["type"])
    type_ = type_of(type.IsScalar() ? type.Scalar() : std::string());
  if (const auto device = node["device"]) device >> device_;
  if (const auto address = node["address"]) address >> address_;
  commands_enabled_ = !PrivateForm::is_used() || !node[disabled_key];
  const auto speed = node[commands_enabled_ ? "speed" : disabled_key];
  if (!speed || speed.IsNull()) return;
  const auto& tag = speed.Tag();
  reverse_ = tag == "!reverse";
  if (!reverse_ && tag != "?" && !tag.empty()) throw YAML::InvalidScalar(speed.Mark());
  speed >> speed_ratio_;
  if (speed_ratio_ < 0) throw YAML::InvalidScalar(speed.Mark());
}

void Decoder::save(YAML::Emitter& out) const {
  out << YAML::BeginMap;
  out << YAML::Key << "type" << YAML::Value << type_words[static_cast<std::size_t>(type_)];
  out << YAML::Key << "device" << YAML::Value << device_;
  out << YAML::Key << "address" << YAML::Value << address_;
  out << YAML::Key << "speed" << YAML::Value;
  if (commands_enabled_) {
    save_speed(out);
  } else {
    out << YAML::Null;
    save_disabled_speed(out);
  }
  out << YAML::EndMap;
}

void Decoder::save_speed(YAML::Emitter& out) const {
  if (reverse_) out << YAML::LocalTag("reverse");
  out << shortest_text(speed_ratio_);
}

void Decoder::save_disabled_speed(YAML::Emitter& out) const {
  if (!PrivateForm::is_used()) return;
  out << YAML::Key << disabled_key << YAML::Value;
  save_speed(out);
}

void Decoder::restore(const YAML::Node& node) {
  auto settings = YAML::Clone(node);
  settings.remove("device");
  const auto wanted = Glib::RefPtr<Decoder>(new Decoder(settings));
  set_type(wanted->type_);
  set_device(EntryChange::object_at<Device>(node["device"]));
  set_address(wanted->address_);
  set_commands_enabled(wanted->commands_enabled_);
  set_reverse(wanted->reverse_);
  set_speed_ratio(wanted->speed_ratio_);
}

// --- What is wanted ---

void Decoder::set_speed(unsigned speed) {
  assert((speed <= 126) || (speed == -1U));
  if (speed == DecoderUpdate::emergency_stop) {
    state_.speed = speed;
  } else {
    // A value above the highest step would overwrite other bits of a command.
    const auto scaled = std::floor(static_cast<double>(speed) * speed_ratio_);
    state_.speed =
        static_cast<std::uint32_t>(std::min(scaled, static_cast<double>(DecoderUpdate::max_speed)));
  }
  if (commands_enabled_) command(DecoderUpdate::speed_bit);
}

void Decoder::set_direction(Direction direction) {
  state_.direction = reverse_ ? opposite(direction) : direction;
  if (commands_enabled_) command(DecoderUpdate::direction_bit);
}

void Decoder::set_function(unsigned fn, bool on) {
  assert(fn <= 28);
  const auto bit = 1u << fn;
  state_.functions = on ? state_.functions | bit : state_.functions & ~bit;
  command(DecoderUpdate::function_bit(fn));
}

void Decoder::command(std::uint32_t item) {
  state_.mask |= item;
  commanded_ |= item;
  if (item == DecoderUpdate::speed_bit) has_speed_here_ = true;
  complete({});
}

void Decoder::mark_out_of_date(std::uint32_t items) {
  const auto moves = DecoderUpdate::speed_bit | DecoderUpdate::direction_bit;
  const auto commanded = commands_enabled_ ? commanded_ : commanded_ & ~moves;
  if (retired_) return;
  state_.mask |= commanded & items;
  if ((state_.mask & DecoderUpdate::speed_bit) != 0) has_speed_here_ = true;
}

// --- Reconciling ---

void Decoder::complete(const DecoderUpdate& delivered) {
  state_.mask &= ~delivered.agreeing(state_);
  if (retired_ || state_.mask == 0) return;
  // An operation that ends at once calls `complete` again before the next one is started. The inner
  // call sees the newest state and starts everything that is due, so the outer one stops.
  const auto round = ++round_;
  const auto self = Glib::RefPtr<Decoder>((reference(), this));
  if (state_.mask & DecoderUpdate::speed_bit) return driving_device().run_update_speed(this);
  if (state_.mask & DecoderUpdate::direction_bit) {
    return driving_device().run_update_direction(this);
  }
  for (unsigned fn = 0; fn <= DecoderUpdate::max_function && round == round_; ++fn) {
    if (state_.mask & DecoderUpdate::function_bit(fn)) {
      driving_device().run_update_function(this, fn);
    }
  }
}

void Decoder::resend() {
  complete({});
}

sigc::signal<void, const Decoder&>& Decoder::signal_out_of_reach() {
  static auto* signal = new sigc::signal<void, const Decoder&>;
  return *signal;
}

void Decoder::leave_address() {
  signal_out_of_reach().emit(*this);
  has_speed_here_ = false;
}

void Decoder::retire() {
  if (!retired_) leave_address();
  retired_ = true;
  ++round_;
  state_.mask = 0;
  device_ = nullptr;
  device_deleted_.disconnect();
}

// --- The device ---

Device& Decoder::driving_device() const {
  return device_ ? *device_ : Layout::get().get_default_device();
}

void Decoder::set_device(Device* device) {
  if (device == device_) return;
  leave_address();
  signal_changing_.emit();
  device_ = device;
  follow_device();
  signal_changed_.emit();
}

void Decoder::set_device(zemblar::Object* object) {
  set_device(dynamic_cast<Device*>(object));
}

void Decoder::follow_device() {
  device_deleted_.disconnect();
  if (!device_) return;
  device_deleted_ = ScopedConnection(
      device_->signal_deleted().connect([this] { set_device(static_cast<Device*>(nullptr)); }));
}

// --- Settings ---

void Decoder::set_type(DecoderType type) {
  if (type == type_) return;
  signal_changing_.emit();
  type_ = type;
  signal_changed_.emit();
}

void Decoder::set_address(Address address) {
  if (address == address_) return;
  leave_address();
  signal_changing_.emit();
  address_ = address;
  signal_changed_.emit();
}

void Decoder::set_speed_ratio(double ratio) {
  if (!(ratio >= 0) || !std::isfinite(ratio) || ratio == speed_ratio_) return;
  signal_changing_.emit();
  speed_ratio_ = ratio;
  signal_changed_.emit();
}

void Decoder::set_commands_enabled(bool enabled) {
  if (enabled == commands_enabled_) return;
  leave_address();
  signal_changing_.emit();
  commands_enabled_ = enabled;
  signal_changed_.emit();
}

void Decoder::set_reverse(bool reverse) {
  if (reverse == reverse_) return;
  signal_changing_.emit();
  reverse_ = reverse;
  signal_changed_.emit();
}

}  // namespace zemblar
