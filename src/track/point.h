#pragma once

#include <map>
#include <memory>

#include "track/point_base.h"

namespace zemblar {

/// A point: the link `common`, and one link per state. The route is between `common` and the link
/// of the current state. A train entering by another link has no route.
///
/// The links are named "common" and "state:" followed by the present name of the state. When a
/// state ends, its link ends too; a locomotive whose `front` or `back` is that link loses its
/// place.
///
/// In a layout file: `!point` with `name`, `id`, `outputs`, `states`, `input` and `links`, a
/// mapping from the links' names to the links.
class Point : public PointBase {
 public:
  Point();
  explicit Point(const YAML::Node& node);
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  BlockLink* next_link(BlockLink* in) override;
  [[nodiscard]] BlockLink* get_link(const std::string& name) override;
  [[nodiscard]] std::string get_link_name(const BlockLink* link) const override;
  /// The link of a state; null for a state of another point.
  [[nodiscard]] BlockLink* state_link(const PointState* state) const;

  BlockLink common;

 protected:
  [[nodiscard]] PointState* make_state() override { return new PointState(this); }
  [[nodiscard]] PointState* make_state(const YAML::Node& node) override {
    return new PointState(this, node);
  }
  void adopt(PointState* state) override;
  void on_state_ending(PointState* state) override;
  void on_state_removed(PointState* state) override { links_.erase(state); }

 private:
  struct Empty {};
  explicit Point(Empty tag);

  std::map<const PointState*, std::unique_ptr<BlockLink>> links_;
};

}  // namespace zemblar
