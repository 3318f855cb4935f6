#include "locomotives/function.h"

#include <yaml-cpp/yaml.h>

#include <array>

#include "core/alive_guard.h"
#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/private_form.h"
#include "core/property.h"
#include "core/string_pool.h"
#include "core/yaml_io.h"
#include "locomotives/lok.h"
#include "locomotives/script_overlay.h"
#include "runtime/timer.h"

namespace zemblar {
namespace {

constexpr std::chrono::milliseconds pulse_length(200);
constexpr std::array<const char*, 4> type_words = {"Toggle", "Pulse", "Trigger", "Script"};

Function::Type read_type(const YAML::Node& node) {
  const auto& word = scalar_of(node);
  for (std::size_t i = 0; i < type_words.size(); ++i) {
    if (word == type_words[i]) return static_cast<Function::Type>(i);
  }
  throw YAML::RepresentationException(node.Mark(), "Invalid Function Type");
}

unsigned read_below(const YAML::Node& node, std::size_t limit) {
  unsigned value = 0;
  node >> value;
  if (value >= limit) throw YAML::InvalidScalar(node.Mark());
  return value;
}

}  // namespace

Function::Function(Lok* lok)
    : Glib::ObjectBase("Function"), Object(_("Function %1")), pooled_name_(get_name()), lok_(lok) {
  register_property<unsigned>(this, "function", &Function::get_function, &Function::set_function);
  register_property<unsigned>(this, "decoder", &Function::get_decoder, &Function::set_decoder);
  register_property<bool>(this, "hidden", &Function::get_hidden, &Function::set_hidden);
  register_property<bool>(this, "state", &Function::get_state, &Function::set_state);
  register_property<Type>(this, "type", &Function::get_type, &Function::set_type);
  register_property<bool>(this, "state-overlay", &Function::get_state_overlay);
  register_property<std::string>(this, "on-image", &Function::get_on_image,
                                 &Function::set_on_image);
  register_property<std::string>(this, "off-image", &Function::get_off_image,
                                 &Function::set_off_image);
  function_names().add(pooled_name_);
}

Function::Function(Lok* lok, const YAML::Node& node) : Function(lok) {
  load_identity(node);
  if (const auto type = node["type"]) type_ = read_type(type);
  if (const auto key = node["decoder"]) decoder_ = read_below(key, lok->get_decoders().size());
  if (const auto key = node["function"]) function_ = read_below(key, max_function + 1);
  read_picture(node, "on_image", on_image_);
  read_picture(node, "off_image", off_image_);
  read_private(node, "hidden", hidden_);
}

Function::~Function() {
  ScriptOverlay::forget(this);
  function_names().remove(pooled_name_);
}

void Function::save(YAML::Emitter& out) const {
  out << YAML::BeginMap;
  save_identity(out);
  out << YAML::Key << "type" << YAML::Value << type_words[static_cast<std::size_t>(type_)];
  out << YAML::Key << "decoder" << YAML::Value << decoder_;
  out << YAML::Key << "function" << YAML::Value << function_;
  write_picture(out, "on_image", on_image_);
  write_picture(out, "off_image", off_image_);
  write_private(out, "hidden", hidden_);
  out << YAML::EndMap;
}

void Function::restore(const EntryChange& change) {
  Object::restore(change);
  if (change.differs("type")) set_type(read_type(change.at("type")));
  change.read<unsigned>("decoder", [this](unsigned index) { set_decoder(index); });
  change.read<unsigned>("function", [this](unsigned number) { set_function(number); });
  change.read<bool>("hidden", [this](bool hidden) { set_hidden(hidden); });
  PicturePath on;
  PicturePath off;
  read_picture(change.entry(), "on_image", on);
  read_picture(change.entry(), "off_image", off);
  if (change.differs("on_image")) set_on_picture(on);
  if (change.differs("off_image")) set_off_picture(off);
}

void Function::on_name_changed() {
  // Adds the new name first, so that a name with one user does not vanish from the pool and
  // reappear.
  function_names().add(get_name());
  function_names().remove(pooled_name_);
  pooled_name_ = get_name();
}

// --- State ---

Glib::RefPtr<Decoder> Function::decoder() const {
  const auto& decoders = lok_->get_decoders();
  return decoder_ < decoders.size() ? decoders[decoder_] : Glib::RefPtr<Decoder>();
}

void Function::send(bool on) {
  if (const auto target = decoder()) target->set_function(function_, on);
}

// Switches off the same function of the same decoder that was switched on, whatever has happened to
// this button meanwhile.
void Function::pulse() {
  const auto target = decoder();
  if (!target) return;
  target->set_function(function_, true);
  Timeout::once(pulse_length, [target, number = function_] {
    target->set_function(number, false);
  }).release();
}

void Function::set_state(bool on) {
  if (type_ == Type::Pulse) {
    if (!on) return;
    pulse();
  } else {
    if (on == state_) return;
    state_ = on;
    state_overlay_ = ScriptOverlay::apply(this, on);
    send(state_overlay_);
  }
  const AliveGuard alive(*this);
  notify_property(*this, "state");
  if (alive) notify_property(*this, "state-overlay");
}

void Function::apply_state_overlay() {
  state_overlay_ = ScriptOverlay::apply(this, state_);
  send(state_overlay_);
  notify_property(*this, "state-overlay");
}

// --- Settings ---

void Function::set_function(unsigned function) {
  if (function == function_) return;
  before_change();
  function_ = function;
  notify_property(*this, "function");
}

void Function::set_decoder(unsigned index) {
  if (index == decoder_) return;
  before_change();
  decoder_ = index;
  notify_property(*this, "decoder");
}

void Function::set_hidden(bool hidden) {
  if (hidden == hidden_) return;
  before_change();
  hidden_ = hidden;
  notify_property(*this, "hidden");
}

void Function::set_type(Type type) {
  if (type == type_) return;
  before_change();
  type_ = type;
  notify_property(*this, "type");
}

void Function::set_on_picture(const PicturePath& image) {
  if (image == on_image_) return;
  before_change();
  on_image_ = image;
  notify_property(*this, "on-image");
}

void Function::set_off_picture(const PicturePath& image) {
  if (image == off_image_) return;
  before_change();
  off_image_ = image;
  notify_property(*this, "off-image");
}

void Function::on_decoder_removed(unsigned index) {
  const auto count = static_cast<unsigned>(lok_->get_decoders().size());
  if (decoder_ > index) --decoder_;
  if (decoder_ >= count) decoder_ = count - 1;
  notify_property(*this, "decoder");
}

}  // namespace zemblar
