#include "track/scissor.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>

#include "core/document_class.h"
#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/yaml_io.h"

namespace zemblar {
namespace {

const DocumentClass::Registration registration(document_class<Scissor>("!scissor",
                                                                       Section::points));

constexpr std::array role_keys{"tl-tr", "tl-br", "bl-tr", "bl-br"};

}  // namespace

Scissor::Scissor(Empty /*tag*/)
    : Glib::ObjectBase("Scissor"), PointBase(_("Scissor Point %1")), links(this) {}

Scissor::Scissor() : Scissor(Empty{}) {
  const auto off = PointStateOutput::off();
  const auto on = PointStateOutput::on();
  add_output().set_output(2);
  roles_ = {
      add_state(_("Top Left to Top Right"), {off, off}),
      add_state(_("Top Left to Bottom Right"), {off, on}),
      add_state(_("Bottom Left to Top Right"), {on, off}),
      add_state(_("Bottom Left to Bottom Right"), {on, on}),
  };
  begin_with_first_state();
}

Scissor::Scissor(const YAML::Node& node) : Scissor(Empty{}) {
  load_point(node);
  load_input(node);
  if (const auto ends = node["links"]; ends && !ends.IsNull()) {
    for (const auto* name : Corners::names) load_link(ends, name, *links.find(name));
  }
  const auto map = node["state-map"];
  if (!map || map.IsNull()) return;
  for (std::size_t i = 0; i < role_keys.size(); ++i) read_key(map, role_keys[i], roles_[i]);
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        for (auto*& state : roles_) {
          if (state && state->get_parent() != this) state = nullptr;
        }
        return true;
      },
      *this));
}

void Scissor::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("scissor") << YAML::BeginMap;
  save_point(out);
  save_input(out);
  out << YAML::Key << "links" << YAML::Value << YAML::BeginMap;
  for (std::size_t i = 0; i < Corners::names.size(); ++i) {
    save_link(out, Corners::names[i], *links.all()[i]);
  }
  out << YAML::EndMap;
  out << YAML::Key << "state-map" << YAML::Value << YAML::BeginMap;
  for (std::size_t i = 0; i < role_keys.size(); ++i) {
    out << YAML::Key << role_keys[i] << YAML::Value << static_cast<const Object*>(roles_[i]);
  }
  out << YAML::EndMap << YAML::EndMap;
}

void Scissor::restore(const EntryChange& change) {
  PointBase::restore(change);
  const auto ends = change.below("links");
  for (const auto* name : Corners::names) restore_link(ends, name, *links.find(name));
  const auto map = change.below("state-map");
  for (std::size_t i = 0; i < role_keys.size(); ++i) {
    map.read_reference<PointState>(role_keys[i], [&](auto* state) { roles_[i] = state; });
  }
}

Scissor::Way Scissor::way_of(const PointState* state) {
  const std::array<Way, 4> ways{{
      {&links.top_left, &links.top_right},
      {&links.top_left, &links.bottom_right},
      {&links.bottom_left, &links.top_right},
      {&links.bottom_left, &links.bottom_right},
  }};
  const auto* role = state ? std::ranges::find(roles_, state) : roles_.end();
  return role == roles_.end() ? Way{} : ways[static_cast<std::size_t>(role - roles_.begin())];
}

BlockLink* Scissor::next_link(BlockLink* in) {
  const auto [left, right] = way_of(get_state());
  if (!in) return nullptr;
  if (in == left) return right;
  return in == right ? left : nullptr;
}

void Scissor::on_state_ending(PointState* state) {
  std::ranges::replace(roles_, state, static_cast<PointState*>(nullptr));
}

}  // namespace zemblar
