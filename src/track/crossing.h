#pragma once

#include "track/block.h"
#include "track/corners.h"

namespace zemblar {

/// Where two tracks cross: both diagonals are always open. There is one holder and one detector
/// for the two of them. A crossing is claimed by the trains that walk over it; RailCom places no
/// locomotive on it.
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
