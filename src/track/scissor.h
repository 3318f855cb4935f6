#pragma once

#include <array>

#include "track/corners.h"
#include "track/point_base.h"

namespace zemblar {

/// A double crossover: two tracks, left and right, with four states of which each joins one of the
/// left ends with one of the right ones. There is one holder and one detector for both tracks.
///
/// Which ends a state joins is its role, and goes neither by its name nor by its place. A state
/// without a role has no way through.
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

  /// The two ends that a state joins; null without a role.
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

  std::array<PointState*, 4> roles_{};  // in the order of the class comment
};

}  // namespace zemblar
