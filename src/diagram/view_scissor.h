#pragma once

#include "diagram/view_corners.h"
#include "diagram/view_switch.h"
#include "track/scissor.h"

namespace zemblar {

/// The picture of a scissor point: a way from each left corner to each right one.
///
/// In a layout file: `scissor`, the four corners, and `straight`, a sequence of the roles whose way
/// is straight. A plain true or false stands for all or none.
class ViewScissor : public ViewSwitch {
 public:
  /// A new one around a place.
  ViewScissor(Scissor& scissor, const Vector& place);
  explicit ViewScissor(const YAML::Node& node);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] ViewLinkNode* get_link_node(const std::string& name) override {
    return corners_.find(name);
  }

 protected:
  /// Joins none: each corner has two ways and keeps its own direction.
  void join_neighbours() override {}
  [[nodiscard]] std::vector<ViewLinkNode*> ends() override { return corners_.all(); }
  [[nodiscard]] std::vector<Way> ways() override;

 private:
  ViewScissor();
  void attach(Scissor& scissor);
  void load_straight(const YAML::Node& node);

  Scissor* scissor_ = nullptr;
  ViewCorners corners_;
  std::array<bool, 4> straight_ = {true, true, true, true};  // indexed by role
};

}  // namespace zemblar
