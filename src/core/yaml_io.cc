#include "core/yaml_io.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/named_form.h"
#include "core/object.h"
#include "core/private_form.h"

namespace zemblar {
namespace {

template <typename Number>
Number whole_scalar(const YAML::Node& node) {
  const auto& text = scalar_of(node);
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw YAML::InvalidScalar(node.Mark());
  }
  return value;
}

constexpr auto binary_tag = "tag:yaml.org,2002:binary";

bool is_printable(char byte) {
  return byte >= ' ' && byte <= '~';
}

template <typename Number>
std::string shortest_form(Number value) {
  std::array<char, 32> text{};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
  assert(error == std::errc());
  return {text.data(), end};
}

}  // namespace

YAML::Emitter& operator<<(YAML::Emitter& out, const Object& object) {
  object.save(out);
  return out;
}

YAML::Emitter& operator<<(YAML::Emitter& out, const Object* object) {
  if (!object) return out << YAML::Null;
  if (NamedForm::used()) {
    NamedForm::write(out, *object);
    return out;
  }
  return out << Layout::get().get_id(object);
}

YAML::Emitter& operator<<(YAML::Emitter& out, const Glib::ustring& text) {
  return out << text.raw();
}

const std::string& scalar_of(const YAML::Node& node) {
  if (!node.IsScalar()) throw YAML::InvalidScalar(node.Mark());
  return node.Scalar();
}

YAML::Node required(const YAML::Node& node, const char* key) {
  auto value = node[key];
  if (!value) throw YAML::TypedKeyNotFound<std::string>(node.Mark(), key);
  return value;
}

std::optional<int> read_fitting_int(const YAML::Node& node) {
  const auto& text = scalar_of(node);
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc::invalid_argument || end != text.data() + text.size()) {
    throw YAML::InvalidScalar(node.Mark());
  }
  return error == std::errc() ? std::optional(value) : std::nullopt;
}

void operator>>(const YAML::Node& node, Glib::ustring& text) {
  text = readable(scalar_of(node));
}

void operator>>(const YAML::Node& node, std::string& text) {
  text = scalar_of(node);
}

void operator>>(const YAML::Node& node, bool& value) {
  scalar_of(node);
  try {
    value = node.as<bool>();
  } catch (const YAML::RepresentationException&) {
    throw YAML::InvalidScalar(node.Mark());
  }
}

void operator>>(const YAML::Node& node, int& value) {
  value = whole_scalar<int>(node);
}

void operator>>(const YAML::Node& node, unsigned& value) {
  value = whole_scalar<unsigned>(node);
}

void operator>>(const YAML::Node& node, double& value) {
  const auto read = whole_scalar<double>(node);
  if (!std::isfinite(read)) throw YAML::InvalidScalar(node.Mark());
  value = read;
}

std::string shortest_text(double value) {
  return shortest_form(value);
}

std::string shortest_text(float value) {
  return shortest_form(value);
}

void write_bytes(YAML::Emitter& out, const std::string& bytes) {
  if (std::ranges::all_of(bytes, is_printable)) {
    out << bytes;
  } else {
    out << YAML::Binary(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  }
}

std::string read_bytes(const YAML::Node& node) {
  const auto& text = scalar_of(node);
  if (node.Tag() != binary_tag) return text;
  const auto bytes = YAML::DecodeBase64(text);
  if (bytes.empty() && !text.empty()) throw YAML::InvalidScalar(node.Mark());
  return {bytes.begin(), bytes.end()};
}

YAML::_Tag unwritable_tag(const std::string& tag) {
  return YAML::LocalTag(PrivateForm::is_used() ? tag : "!" + tag);
}

void resolve_later(const YAML::Node& node, std::function<bool(Object*)> assign) {
  auto& layout = Layout::get();
  if (auto* form = NamedForm::used()) {
    layout.signal_resolve().connect(form->read(node, std::move(assign)));
    return;
  }
  unsigned id = 0;
  node >> id;
  layout.signal_resolve().connect(
      [&layout, id, assign = std::move(assign)] { return assign(layout.find_id(id)); });
}

}  // namespace zemblar
