#include "diagram/view_scissor.h"

#include <algorithm>

#include "diagram/view_class.h"

namespace zemblar {
namespace {

using Corner = ViewCorners::Corner;

struct Role {
  const char* name;
  Corner left;
  Corner right;
};
constexpr std::array<Role, 4> roles = {{{"tl-tr", Corner::top_left, Corner::top_right},
                                        {"tl-br", Corner::top_left, Corner::bottom_right},
                                        {"bl-tr", Corner::bottom_left, Corner::top_right},
                                        {"bl-br", Corner::bottom_left, Corner::bottom_right}}};

const ViewClass::Registration registration(
    view_class<ViewScissor, Scissor>("!view-scissor", Section::points,
                                     {.place = 3,
                                      .icon = "orvane-scissor",
                                      .label = N_("Scissor Point"),
                                      .name = N_("Sc_issor Point"),
                                      .add_new = N_("Add New Scissor Point"),
                                      .add_existing = N_("Add Existing Scissor Point"),
                                      .heading = N_("Scissor Points")}));

}  // namespace

ViewScissor::ViewScissor() {
  set_up(corners_[Corner::top_left], ViewLinkNode::inward);
  set_up(corners_[Corner::bottom_left], ViewLinkNode::inward);
  set_up(corners_[Corner::top_right], ViewLinkNode::outward);
  set_up(corners_[Corner::bottom_right], ViewLinkNode::outward);
}

ViewScissor::ViewScissor(Scissor& scissor, const Vector& place) : ViewScissor() {
  corners_.place(place);
  attach(scissor);
}

ViewScissor::ViewScissor(const YAML::Node& node) : ViewScissor() {
  load_shown<Scissor>(node, "scissor", [this](Scissor& scissor) { attach(scissor); });
  corners_.load(node);
  load_straight(required(node, "straight"));
}

void ViewScissor::load_straight(const YAML::Node& node) {
  if (node.IsScalar()) {
    bool all = true;
    node >> all;
    straight_.fill(all);
    return;
  }
  straight_.fill(false);
  for (const auto& entry : node) {
    const auto role = std::ranges::find(roles, scalar_of(entry), &Role::name);
    if (role == roles.end()) throw YAML::InvalidScalar(entry.Mark());
    straight_[static_cast<std::size_t>(role - roles.begin())] = true;
  }
}

void ViewScissor::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("view-scissor") << YAML::BeginMap;
  out << YAML::Key << "scissor" << YAML::Value << static_cast<const zemblar::Object*>(scissor_);
  corners_.save(out);
  out << YAML::Key << "straight" << YAML::Value << YAML::Flow << YAML::BeginSeq;
  for (std::size_t i = 0; i < roles.size(); ++i) {
    if (straight_[i]) out << roles[i].name;
  }
  out << YAML::EndSeq << YAML::EndMap;
}

void ViewScissor::attach(Scissor& scissor) {
  scissor_ = &scissor;
  ViewSwitch::attach(scissor);
  corners_.attach(scissor.links);
}

// One way for each state that has a role.
std::vector<ViewSwitch::Way> ViewScissor::ways() {
  std::vector<Way> ways;
  if (!scissor_) return ways;
  for (auto* state : scissor_->states()) {
    const auto [left, right] = scissor_->way_of(state);
    for (std::size_t i = 0; i < roles.size(); ++i) {
      auto& start = corners_[roles[i].left];
      auto& end = corners_[roles[i].right];
      if (start.get_block_link() != left || end.get_block_link() != right) continue;
      ways.push_back({state, {&start, &end, &straight_[i]}});
    }
  }
  return ways;
}

}  // namespace zemblar
