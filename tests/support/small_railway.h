#pragma once

#include <string>
#include <vector>

#include "locomotives/lok.h"
#include "simulator/trains/told_detector.h"
#include "tests/support/layout_fixture.h"
#include "track/zone.h"

namespace zemblar::test {

using Detector = simulator::ToldDetector;

/// A stretch that can be opened and closed like a point, one end to the other.
class Gate : public Block {
 public:
  Gate() : Glib::ObjectBase("Gate"), Block("Gate %1"), left(this), right(this) {}

  BlockLink* next_link(BlockLink* in) override {
    if (!open) return nullptr;
    return in == &left ? &right : in == &right ? &left : nullptr;
  }
  BlockLink* get_link(const std::string& name) override { return name == "left" ? &left : &right; }
  std::string get_link_name(const BlockLink* link) const override {
    return link == &left ? "left" : "right";
  }
  void set_open(bool is_open) {
    open = is_open;
    signal_route().emit();
  }

  bool open = true;
  BlockLink left;
  BlockLink right;
};

/// Blocks in a row or a ring, from left to right.
class SmallRailway : public LayoutTest {
 protected:
  /// With a detector of its own unless told otherwise.
  static Zone* zone(const char* name, bool detected = true) {
    auto* zone = new Zone;
    zone->set_name(name);
    layout().get_blocks().add(zone);
    if (detected) zone->set_input(layout().get_devices().add(new Detector));
    return zone;
  }
  static Detector& at(const Block* block) { return dynamic_cast<Detector&>(*block->get_input()); }

  static std::vector<Zone*> row(const std::vector<const char*>& names) {
    std::vector<Zone*> zones;
    for (const auto* name : names) {
      zones.push_back(zone(name));
      if (zones.size() > 1) zones[zones.size() - 2]->right.connect(&zones.back()->left);
    }
    return zones;
  }
  static std::vector<Zone*> ring(const std::vector<const char*>& names) {
    auto zones = row(names);
    zones.back()->right.connect(&zones.front()->left);
    return zones;
  }

  static Lok* new_lok(const char* name = "lok") {
    auto* lok = new Lok;
    lok->set_name(name);
    return layout().get_loks().add(lok);
  }
  /// Drives towards the right, known to do so.
  static Lok* new_lok_in(const Block* block, const char* name = "lok") {
    auto* lok = new_lok(name);
    at(block).see(lok, 2);
    return lok;
  }

  /// "A.left..B.right": the back, then the front; "?" behind it while the orientation is open.
  static std::string place(const Lok* lok) {
    if (!lok->front && !lok->back) return "nowhere";
    return text(lok->back) + ".." + text(lok->front) + (lok->orientation_known ? "" : "?");
  }
  /// The names of the blocks that the locomotive holds, in the order of the alphabet.
  static std::string held(const Lok* lok) {
    std::vector<std::string> names;
    for (const auto* block : lok->get_blocks()) names.push_back(block->get_name());
    std::sort(names.begin(), names.end());
    std::string all;
    for (const auto& name : names) all += name;
    return all;
  }

 private:
  static std::string text(const BlockLink* link) {
    if (!link) return "null";
    const auto* block = link->get_block();
    return block->get_name().raw() + "." + block->get_link_name(link);
  }
};

}  // namespace zemblar::test
