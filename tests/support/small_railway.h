#pragma once

#include <string>
#include <vector>

#include "devices/device.h"
#include "locomotives/lok.h"
#include "tests/support/layout_fixture.h"
#include "track/zone.h"

namespace zemblar::test {

/// A detector that reports what a test says.
class Detector : public Device {
 public:
  Detector() : Glib::ObjectBase("Detector"), Device("Detector %1") {}

  [[nodiscard]] int supports(std::string_view feature) const override {
    return feature == "Occupancy" || feature == "RailCom" ? 2 : 0;
  }
  [[nodiscard]] bool occupied() const override { return occupied_; }
  [[nodiscard]] unsigned orientation() const override { return orientation_; }
  [[nodiscard]] std::vector<Lok*> detected() const override { return seen_; }

  void occupy(bool on = true) {
    occupied_ = on;
    signal_changed().emit();
  }
  /// As readers do: the occupancy first, then who it is.
  void see(Lok* lok, unsigned orientation = 1) {
    note(lok, orientation);
    report(lok);
  }
  /// The first half of `see`: the new state, of which nobody has been told.
  void note(Lok* lok, unsigned orientation) {
    occupied_ = true;
    orientation_ = orientation;
    seen_.push_back(lok);
  }
  /// The second half.
  void report(Lok* lok) {
    signal_changed().emit();
    signal_arrived().emit(lok);
  }
  void lose(Lok* lok) {
    std::erase(seen_, lok);
    signal_left().emit(lok);
  }

 private:
  bool occupied_ = false;
  unsigned orientation_ = 0;
  std::vector<Lok*> seen_;
};

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
