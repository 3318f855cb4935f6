#pragma once

#include "track/block.h"
#include "track/corners.h"

namespace zemblar {

/// A crossing of two tracks: both diagonals are always open. The two tracks share one holder and
/// one detector. A train claims the crossing when block control moves it on; a RailCom report
/// places no locomotive on a crossing.
///
/// In a layout file: `!crossing` with `name`, `id`, `input`, `top-left`, `top-right`,
/// `bottom-left` and `bottom-right`.
class Crossing : public Block {
 public:
  Crossing();
  explicit Crossing(const YAML::Node& node);
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  BlockLink* next_link(BlockLink* in) override;
  [[nodiscard]] BlockLink* get_link(const std::string& name) override { return links.find(name); }
  [[nodiscard]] std::string get_link_name(const BlockLink* link) const override {
    return links.name_of(link);
  }

  Corners links;
};

}  // namespace zemblar
