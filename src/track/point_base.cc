#include "track/point_base.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cassert>

#include "core/alive_guard.h"
#include "core/collections.h"
#include "core/document_class.h"
#include "core/entry_change.h"
#include "core/private_form.h"
#include "core/property.h"
#include "core/yaml_io.h"

namespace zemblar {
namespace {

const auto accepted_by_points = toplevel_accepts_class<PointBase>(Section::points);
const auto accepted_by_blocks = toplevel_accepts_class<PointBase>(Section::blocks);

const MemberSet::Membership membership(
    MemberKind::point,
    [](const Object* object) { return dynamic_cast<const PointBase*>(object) != nullptr; },
    [](Object& member, MemberSet& set) {
      dynamic_cast<PointBase&>(member).signal_state_changed().connect(
          sigc::track_obj([&set] { set.signal_changed().emit(); }, set));
    });

}  // namespace

PointBase::PointBase(const Glib::ustring& name_format) : Block(name_format) {
  register_property<PointState*>(this, "state", &PointBase::get_state, &PointBase::set_state);
  own(PointOutput::create());
  // Connected here so that this handler always runs first.
  signal_child_removed().connect([this](Object* child) {
    if (auto* state = dynamic_cast<PointState*>(child)) replace_ended(state);
  });
}

// --- The current state ---

void PointBase::set_state(PointState* state) {
  const bool own = state && state->get_parent() == this && !state->is_deleting();
  if (own && state != state_ && !is_deleting()) make_current(state);
}

// A handler may destroy the point.
void PointBase::make_current(PointState* state) {
  const AliveGuard alive(*this);
  state_ = state;
  if (state) state->send();
  if (alive) signal_route().emit();
  if (alive) notify_property(*this, "state");
  if (alive) signal_state_changed_.emit();
}

BlockLink* PointBase::next_link(BlockLink* /*in*/) {
  return nullptr;
}

BlockLink* PointBase::get_link(const std::string& /*name*/) {
  return nullptr;
}

std::string PointBase::get_link_name(const BlockLink* /*link*/) const {
  return {};
}

// --- States come and go ---

std::vector<PointState*> PointBase::states() const {
  std::vector<PointState*> result;
  for (auto* child : *this) {
    auto* state = dynamic_cast<PointState*>(child);
    if (state && !state->is_deleting()) result.push_back(state);
  }
  return result;
}

PointState& PointBase::add_state() {
  auto* state = add(make_state());
  adopt(state);
  return *state;
}

PointState* PointBase::add_state(const Glib::ustring& name,
                                 const std::vector<PointStateOutput>& settings) {
  auto* state = make_state();
  state->set_name(name);
  for (std::size_t i = 0; i < settings.size(); ++i) {
    state->set_setting(*outputs[i].operator->(), settings[i]);
  }
  add(state);
  adopt(state);
  return state;
}

void PointBase::begin_with_first_state() {
  const auto all = states();
  state_ = all.empty() ? nullptr : all.front();
}

void PointBase::adopt(PointState* /*state*/) {
  update_deletable();
}

void PointBase::on_child_added(Object* child) {
  auto* state = dynamic_cast<PointState*>(child);
  if (!state) return;
  const AliveGuard alive(*this);
  adopt(state);
  if (alive && !state_) set_state(state);
}

void PointBase::on_child_removing(Object* child) {
  auto* state = dynamic_cast<PointState*>(child);
  if (!state) return;
  const AliveGuard alive(*this);
  if (state == state_) state_ = nullptr;
  on_state_ending(state);
  if (alive && !is_deleting()) update_deletable();
}

// When the current state ends, the first remaining one becomes current.
void PointBase::replace_ended(PointState* state) {
  on_state_removed(state);
  if (state_ || is_deleting()) return;
  const auto left = states();
  make_current(left.empty() ? nullptr : left.front());
}

// A handler may add and end states, so each round reads the states again.
void PointBase::update_deletable() {
  const AliveGuard alive(*this);
  while (alive) {
    const auto all = states();
    const bool deletable = !has_fixed_states() && all.size() > 2;
    const auto other = std::ranges::find_if(
        all, [=](const auto* state) { return state->get_deletable() != deletable; });
    if (other == all.end()) return;
    (*other)->set_deletable(deletable);
  }
}

// --- Outputs ---

const Glib::RefPtr<PointOutput>& PointBase::own(const Glib::RefPtr<PointOutput>& output) {
  output->signal_changing().connect(sigc::mem_fun(*this, &PointBase::before_change));
  return outputs.emplace_back(output);
}

PointOutput& PointBase::get_output(unsigned index) const {
  const auto& point = *this;
  assert((index > 0) && (index <= point.outputs.size()));
  return *outputs[index - 1].operator->();
}

PointOutput& PointBase::add_output() {
  before_change();
  const auto output = own(PointOutput::create());
  signal_outputs_changed_.emit();
  return *output.operator->();
}

void PointBase::remove_output(unsigned index) {
  const auto& output = get_output(index);
  before_change();
  for (auto* state : states()) state->forget(output);
  outputs.erase(outputs.begin() + (index - 1));
  signal_outputs_changed_.emit();
}

// --- The file ---

void PointBase::load_point(const YAML::Node& node) {
  load_identity(node);
  if (PrivateForm::is_used()) load_invert(node);
  if (const auto entries = node["outputs"]; entries && !entries.IsNull()) {
    if (!entries.IsSequence()) throw YAML::InvalidScalar(entries.Mark());
    outputs.clear();
    for (const auto& entry : entries) own(PointOutput::create(entry));
  }
  if (const auto entries = node["states"]; entries && !entries.IsNull()) {
    if (!entries.IsSequence()) throw YAML::InvalidScalar(entries.Mark());
    for (const auto& entry : entries) adopt(add(make_state(entry)));
  }
  begin_with_first_state();
}

void PointBase::restore(const EntryChange& change) {
  Block::restore(change);
  if (change.differs("outputs")) restore_outputs(change.at("outputs"));
  if (change.differs("outputs") || change.differs("states")) {
    const auto states = change.below("states");
    restore_states(states.former(), states.entry());
  }
}

void PointBase::restore_outputs(const YAML::Node& entries) {
  while (outputs.size() > entries.size()) remove_output(static_cast<unsigned>(outputs.size()));
  while (outputs.size() < entries.size()) add_output();
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const auto held = outputs[i];
    held->restore(entries[i]);
  }
}

void PointBase::restore_states(const YAML::Node& from, const YAML::Node& to) {
  restore_children(*this, from, to, [this](const YAML::Node& entry, unsigned place) {
    adopt(insert(make_state(entry), place));
  });
}

void PointBase::save_point(YAML::Emitter& out) const {
  save_identity(out);
  if (PrivateForm::is_used()) save_invert(out);
  out << YAML::Key << "outputs" << YAML::Value << YAML::BeginSeq;
  for (const auto& output : outputs) output->save(out);
  out << YAML::EndSeq;
  out << YAML::Key << "states" << YAML::Value << YAML::BeginSeq;
  for (const auto* state : states()) out << *state;
  out << YAML::EndSeq;
}

}  // namespace zemblar
