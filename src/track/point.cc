#include "track/point.h"

#include <yaml-cpp/yaml.h>

#include "core/alive_guard.h"
#include "core/document_class.h"
#include "core/entry_change.h"
#include "core/i18n.h"
#include "core/yaml_io.h"

namespace zemblar {
namespace {

const DocumentClass::Registration registration(document_class<Point>("!point", Section::points));

constexpr std::string_view state_prefix = "state:";

std::string link_name(const PointState& state) {
  return std::string(state_prefix) + state.get_name().raw();
}

}  // namespace

Point::Point(Empty /*tag*/) : Glib::ObjectBase("Point"), PointBase(_("Point %1")), common(this) {}

Point::Point() : Point(Empty{}) {
  add_state(_("Straight"), {PointStateOutput::off()});
  add_state(_("Curved"), {PointStateOutput::on()});
  begin_with_first_state();
}

Point::Point(const YAML::Node& node) : Point(Empty{}) {
  load_point(node);
  load_input(node);
  const auto links = node["links"];
  if (!links || links.IsNull()) return;
  load_link(links, "common", common);
  for (auto* state : states()) load_link(links, link_name(*state), *state_link(state));
}

void Point::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("point") << YAML::BeginMap;
  save_point(out);
  save_input(out);
  out << YAML::Key << "links" << YAML::Value << YAML::BeginMap;
  save_link(out, "common", common);
  for (const auto* state : states()) save_link(out, link_name(*state), *state_link(state));
  out << YAML::EndMap << YAML::EndMap;
}

void Point::restore(const EntryChange& change) {
  PointBase::restore(change);
  const auto links = change.below("links");
  restore_link(links, "common", common);
  for (auto* state : states()) restore_link(links, link_name(*state), *state_link(state));
}

// --- Links ---

BlockLink* Point::state_link(const PointState* state) const {
  const auto found = links_.find(state);
  return found == links_.end() ? nullptr : found->second.get();
}

BlockLink* Point::next_link(BlockLink* in) {
  auto* open = state_link(get_state());
  if (in == &common) return open;
  return in && in == open ? &common : nullptr;
}

BlockLink* Point::get_link(const std::string& name) {
  if (name == "common") return &common;
  if (!name.starts_with(state_prefix)) return nullptr;
  return state_link(dynamic_cast<PointState*>(find_child(name.substr(state_prefix.size()))));
}

std::string Point::get_link_name(const BlockLink* link) const {
  if (link == &common) return "common";
  for (const auto& [state, state_link] : links_) {
    if (link == state_link.get()) return link_name(*state);
  }
  return {};
}

void Point::adopt(PointState* state) {
  auto& link = links_[state];
  if (!link) link = std::make_unique<BlockLink>(this);
  PointBase::adopt(state);
}

// The link exists until `on_state_removed`, so that handlers of the disconnection can use it.
void Point::on_state_ending(PointState* state) {
  const AliveGuard alive(*this);
  auto* link = state_link(state);
  if (!link) return;
  signal_link_ending().emit(link);
  if (alive) link->disconnect();
}

}  // namespace zemblar
