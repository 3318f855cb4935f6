#include "track/point_state.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <limits>
#include <vector>

#include "core/alive_guard.h"
#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/private_form.h"
#include "core/property.h"
#include "core/yaml_io.h"
#include "track/point_base.h"

namespace zemblar {
namespace {

using Type = PointOutput::Type;

constexpr std::array<const char*, 2> basic_words = {"Left", "Right"};

void read_basic(const YAML::Node& node, std::uint8_t& basic) {
  const auto& word = scalar_of(node);
  if (word != basic_words[0] && word != basic_words[1]) throw YAML::InvalidScalar(node.Mark());
  basic = word == basic_words[1] ? 1 : 0;
}

void read_extended(const YAML::Node& node, std::uint8_t& extended) {
  unsigned value = 0;
  node >> value;
  if (value > PointStateOutput::max_extended) throw YAML::InvalidScalar(node.Mark());
  extended = static_cast<std::uint8_t>(value);
}

void read_servo(const YAML::Node& node, float& servo) {
  double value = 0;
  node >> value;
  if (std::abs(value) > std::numeric_limits<float>::max()) throw YAML::InvalidScalar(node.Mark());
  servo = static_cast<float>(value);
}

const char* setting_key(Type type) {
  switch (type) {
    case Type::Basic:
      return "basic";
    case Type::Extended:
      return "extended";
    case Type::Function:
      return "function";
    case Type::Servo:
      return "servo";
  }
  assert(false);
  return nullptr;
}

/// The types whose values are written: in the private form all, else only that of the output.
std::vector<Type> types_in_form(Type type) {
  if (!PrivateForm::is_used()) return {type};
  return {Type::Basic, Type::Extended, Type::Function, Type::Servo};
}

void read_value(const YAML::Node& node, Type type, PointStateOutput& setting) {
  const auto value = node[setting_key(type)];
  if (!value) return;
  if (type == Type::Basic) read_basic(value, setting.basic);
  if (type == Type::Extended) read_extended(value, setting.extended);
  if (type == Type::Function) value >> setting.function;
  if (type == Type::Servo) read_servo(value, setting.servo);
}

void read_setting(const YAML::Node& node, Type type, PointStateOutput& setting) {
  read_key(node, "enabled", setting.enabled);
  for (const auto each : types_in_form(type)) read_value(node, each, setting);
}

void write_value(YAML::Emitter& out, Type type, const PointStateOutput& setting) {
  out << YAML::Key << setting_key(type) << YAML::Value;
  if (type == Type::Basic) out << basic_words[setting.basic != 0 ? 1 : 0];
  if (type == Type::Extended) out << unsigned{setting.extended};
  if (type == Type::Function) out << setting.function;
  if (type == Type::Servo) out << shortest_text(setting.servo);
}

void write_setting(YAML::Emitter& out, Type type, const PointStateOutput& setting) {
  out << YAML::BeginMap;
  out << YAML::Key << "enabled" << YAML::Value << setting.enabled;
  for (const auto each : types_in_form(type)) write_value(out, each, setting);
  out << YAML::EndMap;
}

}  // namespace

PointState::PointState(PointBase* owner)
    : Glib::ObjectBase("PointState"), Object(_("State %1")), owner_(owner) {}

PointState::PointState(PointBase* owner, const YAML::Node& node) : PointState(owner) {
  load_identity(node);
  const auto& outputs = owner_->get_outputs();
  const auto entries = node["outputs"];
  const bool is_whole = entries && entries.IsSequence() && entries.size() >= outputs.size();
  // During undo the point may have other outputs than when the entry was written.
  if (!is_whole && !PrivateForm::is_used()) throw YAML::InvalidScalar(node.Mark());
  const auto known = entries ? entries.size() : 0;
  for (std::size_t i = 0; i < std::min(outputs.size(), known); ++i) {
    read_setting(entries[i], outputs[i]->get_type(), settings_[outputs[i].operator->()]);
  }
}

void PointState::save(YAML::Emitter& out) const {
  out << YAML::BeginMap;
  save_state(out);
  out << YAML::EndMap;
}

void PointState::save_state(YAML::Emitter& out) const {
  save_identity(out);
  out << YAML::Key << "outputs" << YAML::Value << YAML::BeginSeq;
  for (const auto& output : owner_->get_outputs()) {
    write_setting(out, output->get_type(), setting_of(*output.operator->()));
  }
  out << YAML::EndSeq;
}

// PointBase has restored the outputs before.
void PointState::restore(const EntryChange& change) {
  Object::restore(change);
  const auto entries = change.at("outputs");
  const auto& outputs = owner_->get_outputs();
  for (std::size_t i = 0; i < outputs.size() && i < entries.size(); ++i) {
    const auto& output = *outputs[i].operator->();
    auto setting = setting_of(output);
    read_setting(entries[i], output.get_type(), setting);
    set_setting(output, setting);
  }
}

void PointState::activate() {
  owner_->set_state(this);
}

// A device may act at once, and a handler of that may end the point or remove an output.
void PointState::send() {
  const AliveGuard alive(*this);
  for (std::size_t i = 0; alive && i < owner_->get_outputs().size(); ++i) {
    const auto output = owner_->get_outputs()[i];
    const auto setting = get_setting(*output.operator->());
    output->send(setting);
  }
}

const PointStateOutput& PointState::get_setting(const PointOutput& output) {
  return settings_[&output];
}

PointStateOutput PointState::setting_of(const PointOutput& output) const {
  const auto found = settings_.find(&output);
  return found == settings_.end() ? PointStateOutput() : found->second;
}

void PointState::set_setting(const PointOutput& output, const PointStateOutput& setting) {
  assert(setting.extended <= PointStateOutput::max_extended);
  auto& present = settings_[&output];
  if (setting == present) return;
  before_change();
  present = setting;
  signal_setting_changed_.emit();
}

void PointState::set_deletable(bool deletable) {
  if (deletable == deletable_) return;
  deletable_ = deletable;
  notify_property(*this, "deletable");
}

}  // namespace zemblar
