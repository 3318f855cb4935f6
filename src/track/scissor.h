#pragma once

#include <array>

#include "track/corners.h"
#include "track/point_base.h"

namespace zemblar {

/// A double crossover of two tracks: each of its four states connects one of the left ends with one
/// of the right ends. Both tracks share one holder and one detector.
///
/// The role of a state says which ends it connects; it depends neither on the state's name nor on
/// its position. A state without a role has no route.
///
/// In a layout file: `!scissor` with `name`, `id`, `outputs`, `states`, `input`, `links` and
/// `state-map`, a mapping from the roles `tl-tr`, `tl-br`, `bl-tr` and `bl-br` to states.
class Scissor : public PointBase {
 public:
  Scissor();
  explicit Scissor(const YAML::Node& node);
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  BlockLink* next_link(BlockLink* in) override;
  [[nodiscard]] BlockLink* get_link(const std::string& name) override { return links.find(name); }
  [[nodiscard]] std::string get_link_name(const BlockLink* link) const override {
    return links.name_of(link);
  }
  [[nodiscard]] bool has_fixed_states() const override { return true; }

  /// The two ends that a state connects; both null for a state without a role.
  using Way = std::array<BlockLink*, 2>;
  [[nodiscard]] Way way_of(const PointState* state);

  Corners links;

 protected:
  [[nodiscard]] PointState* make_state() override { return new PointState(this); }
  [[nodiscard]] PointState* make_state(const YAML::Node& node) override {
    return new PointState(this, node);
  }
  void on_state_ending(PointState* state) override;

 private:
  struct Empty {};
  explicit Scissor(Empty tag);

  std::array<PointState*, 4> roles_{};  // in the order of the keys in the class comment
};

}  // namespace zemblar
