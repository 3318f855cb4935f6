#pragma once

#include "track/block.h"

namespace zemblar {

/// The plain block: a stretch of track with two ends, usually with a detector. It converts
/// RailCom's reports to a place of the locomotive.
///
/// RailCom reports on which side of the track a decoder answers, and thus the locomotive's
/// orientation. Side 1 is "left", unless `invert` is set. Without a side the orientation is
/// assumed, and passed on as uncertain.
///
/// In a layout file: `!zone` with `name`, `id`, `input`, `invert`, `left` and `right`.
class Zone : public Block {
 public:
  Zone();
  explicit Zone(const YAML::Node& node);
  void save(YAML::Emitter& out) const override;
  void restore(const EntryChange& change) override;

  BlockLink* next_link(BlockLink* in) override;
  [[nodiscard]] BlockLink* get_link(const std::string& name) override;
  [[nodiscard]] std::string get_link_name(const BlockLink* link) const override;

  BlockLink left;
  BlockLink right;

 protected:
  void on_detected(Lok* lok) override;
};

}  // namespace zemblar
