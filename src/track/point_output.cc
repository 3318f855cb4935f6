#include "track/point_output.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>

#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/private_form.h"
#include "core/property.h"
#include "core/yaml_io.h"
#include "devices/default_device.h"
#include "track/point_state.h"

namespace zemblar {
namespace {

using Type = PointOutput::Type;

struct TypeFacts {
  const char* word;  // in a layout file
  const char* upper_case_word;
  const char* display_name;
  const char* feature;
  Address::Kind kind;
  OutputRange range;
};

const TypeFacts& facts_of(Type type) {
  constexpr auto mobile = Address::Kind::mobile;
  constexpr auto accessory = Address::Kind::accessory;
  constexpr auto output = Address::Kind::output;
  constexpr OutputRange coils{1, PointOutput::max_basic_output};
  constexpr OutputRange functions{0, DecoderUpdate::max_function};
  static constexpr std::array<TypeFacts, 4> table{{
      {"Basic", "BASIC", N_("Basic Accessory"), "DCC", accessory, coils},
      {"Extended", "EXTENDED", N_("Extended Accessory"), "DCC", output, coils},
      {"Function", "FUNCTION", N_("Locomotive Function"), "DCC", mobile, functions},
      {"Servo", "SERVO", N_("Servo"), "Servo", accessory, coils},
  }};
  const auto index = static_cast<std::size_t>(type);
  if (index >= table.size()) assert(false);
  return table[index];
}

Type read_type(const YAML::Node& node) {
  const auto& word = scalar_of(node);
  for (const auto type : {Type::Basic, Type::Extended, Type::Function, Type::Servo}) {
    const auto& facts = facts_of(type);
    if (word == facts.word || word == facts.upper_case_word) return type;
  }
  throw YAML::InvalidScalar(node.Mark());
}

bool has_number(Type type) {
  return type == Type::Basic || type == Type::Function;
}

const char* number_key(Type type) {
  return type == Type::Function ? "function" : "output";
}

void read_number(const YAML::Node& node, Type type, unsigned& number) {
  const auto key = node[number_key(type)];
  if (!key) return;
  key >> number;
  const auto range = output_range(type);
  if (number < range.lowest || number > range.highest) throw YAML::InvalidScalar(key.Mark());
}

// An output whose type has no address or number keeps those of its former type.
constexpr auto unused_address_key = "unused-address";
constexpr auto unused_number_key = "unused-number";

void read_unused(const YAML::Node& node, Type type, Address& address, unsigned& number) {
  if (!has_number(type)) read_private(node, unused_number_key, number);
  const auto entry = node[unused_address_key];
  if (type != Type::Servo || !PrivateForm::is_used() || !entry) return;
  unsigned kind = 0;
  entry[0] >> kind;
  if (kind > 2) throw YAML::InvalidScalar(entry.Mark());
  read_address(entry[1], static_cast<Address::Kind>(kind), address);
}

}  // namespace

Address::Kind address_kind(Type type) {
  return facts_of(type).kind;
}

const char* required_feature(Type type) {
  return facts_of(type).feature;
}

Glib::ustring display_name(Type type) {
  return _(facts_of(type).display_name);
}

OutputRange output_range(Type type) {
  return facts_of(type).range;
}

Glib::RefPtr<PointOutput> PointOutput::create() {
  return Glib::RefPtr<PointOutput>(new PointOutput);
}

Glib::RefPtr<PointOutput> PointOutput::create(const YAML::Node& node) {
  return Glib::RefPtr<PointOutput>(new PointOutput(node));
}

PointOutput::PointOutput() : Glib::ObjectBase("PointOutput") {
  register_property<Type>(this, "type", &PointOutput::get_type, &PointOutput::set_type);
  register_property<Device*>(this, "device", &PointOutput::get_device, &PointOutput::set_device);
  register_property<Address>(this, "address", &PointOutput::get_address, &PointOutput::set_address);
  register_property<unsigned>(this, "output", &PointOutput::get_output, &PointOutput::set_output);
  renew_decoder();
}

PointOutput::PointOutput(const YAML::Node& node) : PointOutput() {
  if (const auto type = node["type"]) type_ = read_type(type);
  address_.set_kind(address_kind(type_));
  read_key(node, "device", device_);
  const auto address = node["address"];
  if (address && type_ != Type::Servo) read_address(address, address_kind(type_), address_);
  if (has_number(type_)) read_number(node, type_, output_);
  read_unused(node, type_, address_, output_);
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        set_device(std::exchange(device_, nullptr));
        renew_decoder();
        return true;
      },
      *this));
}

PointOutput::~PointOutput() {
  decoder_->retire();
}

void PointOutput::save(YAML::Emitter& out) const {
  out << YAML::BeginMap;
  out << YAML::Key << "type" << YAML::Value << facts_of(type_).word;
  out << YAML::Key << "device" << YAML::Value << static_cast<const zemblar::Object*>(device_);
  if (type_ != Type::Servo) out << YAML::Key << "address" << YAML::Value << address_;
  if (has_number(type_)) out << YAML::Key << number_key(type_) << YAML::Value << output_;
  save_unused(out);
  out << YAML::EndMap;
}

void PointOutput::save_unused(YAML::Emitter& out) const {
  if (!has_number(type_)) write_private(out, unused_number_key, output_);
  if (type_ != Type::Servo || !PrivateForm::is_used()) return;
  out << YAML::Key << unused_address_key << YAML::Value << YAML::Flow << YAML::BeginSeq
      << static_cast<unsigned>(address_.get_kind()) << address_ << YAML::EndSeq;
}

void PointOutput::restore(const YAML::Node& node) {
  const auto type = read_type(node["type"]);
  set_type(type);
  set_device(EntryChange::object_at<Device>(node["device"]));
  if (const auto entry = node["address"]) {
    Address address;
    read_address(entry, address_kind(type), address);
    set_address(address);
  }
  auto address = address_;
  auto number = output_;
  if (has_number(type)) read_number(node, type, number);
  read_unused(node, type, address, number);
  set_address(address);
  set_output(number);
}

void PointOutput::send(const PointStateOutput& setting) {
  auto& device = device_ ? *device_ : Layout::get().get_default_device();
  switch (type_) {
    case Type::Basic:
      return device.run_set_point(address_.get_addr(), output_, setting.basic != 0);
    case Type::Extended:
      return device.run_set_aspect(address_.get_addr(), setting.extended);
    case Type::Function: {
      const auto held = decoder_;
      return held->set_function(output_, setting.function);
    }
    case Type::Servo:
      return;
  }
  assert(false);
}

void PointOutput::renew_decoder() {
  if (decoder_) decoder_->retire();
  decoder_ = Decoder::create();
  if (type_ != Type::Function) return;
  decoder_->set_address(address_);
  decoder_->set_device(device_);
}

void PointOutput::announce(const char* property) {
  const auto held = Glib::RefPtr<PointOutput>((reference(), this));
  renew_decoder();
  notify_property(*this, property);
  signal_changed_.emit();
}

void PointOutput::set_type(Type type) {
  if (type == type_) return;
  signal_changing_.emit();
  const auto held = Glib::RefPtr<PointOutput>((reference(), this));
  const auto range = output_range(type);
  type_ = type;
  if (type != Type::Servo) address_.set_kind(address_kind(type));
  output_ = std::clamp(output_, range.lowest, range.highest);
  if (device_ && device_->supports(required_feature(type)) == 0) set_device(nullptr);
  notify_property(*this, "address");
  notify_property(*this, "output");
  announce("type");
}

void PointOutput::set_device(Device* device) {
  if (device == device_) return;
  signal_changing_.emit();
  device_ = device;
  device_deleted_.disconnect();
  if (device_) {
    device_deleted_ = device_->signal_deleted().connect([this] { set_device(nullptr); });
  }
  announce("device");
}

void PointOutput::set_address(Address address) {
  if (type_ != Type::Servo && address.get_kind() != address_kind(type_)) {
    address.set_kind(address_kind(type_));
  }
  if (address == address_) return;
  signal_changing_.emit();
  address_ = address;
  announce("address");
}

void PointOutput::set_output(unsigned output) {
  const auto range = output_range(type_);
  if (output == output_ || output < range.lowest || output > range.highest) return;
  signal_changing_.emit();
  output_ = output;
  announce("output");
}

}  // namespace zemblar
