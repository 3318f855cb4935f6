#pragma once

#include <memory>

#include "diagram/view_switch.h"
#include "track/point.h"

namespace zemblar {

/// The picture of a point: a way from the common end to a node for each state. Nodes are added and
/// removed with the states.
///
/// In a layout file: `point`, `common`, and `states`, a mapping from the states' numbers to nodes
/// in the point's order. A way is straight unless both of its ends have handles for it. The common
/// end can have one neighbour; it is the lead of the ends of all further straight ways.
class ViewPoint : public ViewSwitch {
 public:
  /// A new one around a place.
  ViewPoint(Point& point, const Vector& place);
  explicit ViewPoint(const YAML::Node& node);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] ViewLinkNode* get_link_node(const std::string& name) override;
  void node_moved(const ViewNode& node) override;

 protected:
  void join_neighbours() override;
  [[nodiscard]] std::vector<ViewLinkNode*> ends() override;
  [[nodiscard]] std::vector<Way> ways() override;

 private:
  struct Leg {
    PointState* state = nullptr;
    ViewLinkNode node{};
    bool straight = true;
  };

  ViewPoint();
  void attach(Point& point);
  void set_state(Leg& leg, PointState& state);
  Leg& add_leg();
  [[nodiscard]] bool shows(const PointState& state) const;
  void add_state(PointState& state);
  void remove_state(const zemblar::Object* state);
  void follow_states();
  void sort_legs();
  void set_leads();

  Point* point_ = nullptr;
  ViewLinkNode common_;
  std::vector<std::unique_ptr<Leg>> legs_;
  ScopedConnection state_added_;
  ScopedConnection leg_removed_;
};

}  // namespace zemblar
