#include "diagram/view_point.h"

#include <algorithm>

#include "core/layout.h"
#include "diagram/view_class.h"

namespace zemblar {
namespace {

// Half the length of a new one.
constexpr double half_length = 25.0;
constexpr double leg_distance = 20.0;

const ViewClass::Registration registration(
    view_class<ViewPoint, Point>("!view-point", Section::points,
                                 {.place = 0,
                                  .icon = "orvane-points",
                                  .label = N_("Point"),
                                  .name = N_("_Point"),
                                  .add_new = N_("Add New Point"),
                                  .add_existing = N_("Add Existing Point"),
                                  .heading = N_("Points")}));

}  // namespace

ViewPoint::ViewPoint() {
  set_up(common_, ViewLinkNode::inward);
}

ViewPoint::ViewPoint(Point& point, const Vector& place) : ViewPoint() {
  common_.pos = place - Vector{half_length, 0};
  common_.dir = {1, 0};
  attach(point);
  follow_states();
}

ViewPoint::ViewPoint(const YAML::Node& node) : ViewPoint() {
  load_shown<Point>(node, "point", [this](Point& point) { attach(point); });
  load_node(node, "common", common_);
  for (const auto& entry : node["states"]) {
    auto& leg = add_leg();
    leg.node.load(entry.second);
    if (entry.first.IsNull()) continue;
    resolve_later(entry.first, [this, &leg](zemblar::Object* object) {
      auto* state = dynamic_cast<PointState*>(object);
      if (state && point_ && state->get_owner() == point_) set_state(leg, *state);
      return state != nullptr;
    });
  }
  find_straight_segments();
  set_leads();
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this] {
        std::erase_if(legs_, [](const auto& leg) { return !leg->state; });
        if (point_) follow_states();
        join_neighbours();
        for (const auto& leg : legs_) {
          if (leg->node.get_lead() && leg->node.dir == Vector{}) leg->node.refresh();
        }
        return true;
      },
      *this));
}

void ViewPoint::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("view-point") << YAML::BeginMap;
  out << YAML::Key << "point" << YAML::Value << static_cast<const zemblar::Object*>(point_);
  save_node(out, "common", common_);
  out << YAML::Key << "states" << YAML::Value << YAML::BeginMap;
  for (const auto& leg : legs_) {
    out << YAML::Key << static_cast<const zemblar::Object*>(leg->state) << YAML::Value;
    leg->node.save(out);
  }
  out << YAML::EndMap << YAML::EndMap;
}

// A state's link is found by the point, since its name follows the state's present name.
ViewLinkNode* ViewPoint::get_link_node(const std::string& name) {
  const auto* link = point_ ? point_->get_link(name) : nullptr;
  if (!link) return nullptr;
  const auto nodes = ends();
  const auto found = std::ranges::find(nodes, link, &ViewLinkNode::get_block_link);
  return found == nodes.end() ? nullptr : *found;
}

std::vector<ViewLinkNode*> ViewPoint::ends() {
  std::vector<ViewLinkNode*> nodes{&common_};
  for (const auto& leg : legs_) nodes.push_back(&leg->node);
  return nodes;
}

std::vector<ViewSwitch::Way> ViewPoint::ways() {
  std::vector<Way> ways;
  for (const auto& leg : legs_) {
    ways.push_back({leg->state, {&common_, &leg->node, &leg->straight}});
  }
  return ways;
}

// --- Directions ---

void ViewPoint::join_neighbours() {
  ViewSwitch::join_neighbours();
  set_leads();
}

// The first straight way makes the common end a neighbour; all further ones have it as their lead.
void ViewPoint::set_leads() {
  bool room = true;
  for (const auto& leg : legs_) {
    leg->node.set_lead(leg->straight && !room ? &common_ : nullptr);
    if (leg->straight) room = false;
  }
}

void ViewPoint::node_moved(const ViewNode& node) {
  if (&node != &common_) return;
  for (const auto& leg : legs_) {
    if (leg->node.get_lead()) leg->node.refresh();
  }
}

// --- States come and go ---

void ViewPoint::attach(Point& point) {
  point_ = &point;
  ViewSwitch::attach(point);
  common_.set_block_link(&point.common);
  state_added_ = point.signal_child_added().connect([this](zemblar::Object* child) {
    if (auto* state = dynamic_cast<PointState*>(child)) add_state(*state);
    sort_legs();
    join_neighbours();
    changed();
  });
  leg_removed_ =
      point.signal_child_removed().connect([this](zemblar::Object* child) { remove_state(child); });
}

ViewPoint::Leg& ViewPoint::add_leg() {
  auto& leg = *legs_.emplace_back(std::make_unique<Leg>());
  set_up(leg.node, ViewLinkNode::outward);
  return leg;
}

void ViewPoint::set_state(Leg& leg, PointState& state) {
  if (leg.state || shows(state)) return;
  leg.state = &state;
  if (auto* link = point_->state_link(&state)) leg.node.set_block_link(link);
}

bool ViewPoint::shows(const PointState& state) const {
  return std::ranges::any_of(legs_, [&](const auto& leg) { return leg->state == &state; });
}

void ViewPoint::add_state(PointState& state) {
  if (shows(state)) return;
  before_change();
  const auto place = static_cast<double>(legs_.size()) * leg_distance;
  auto& leg = add_leg();
  leg.node.pos = common_.pos + Vector{2 * half_length, place};
  leg.node.dir = {1, 0};
  set_state(leg, state);
  join_neighbours();
  leg.node.refresh();
}

void ViewPoint::remove_state(const zemblar::Object* state) {
  const auto leg = std::ranges::find_if(legs_, [=](auto& one) { return one->state == state; });
  if (leg == legs_.end()) return;
  // The destructor of the leg's node redraws joined objects, so the leg must not be in the list any
  // more.
  before_change();
  const auto ended = std::move(*leg);
  legs_.erase(leg);
  join_neighbours();
}

void ViewPoint::follow_states() {
  for (auto* state : point_->states()) add_state(*state);
  sort_legs();
}

void ViewPoint::sort_legs() {
  std::ranges::stable_sort(legs_, [](const auto& a, const auto& b) {
    return a->state->get_position() < b->state->get_position();
  });
}

}  // namespace zemblar
