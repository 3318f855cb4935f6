#pragma once

#include <vector>

#include "core/layout.h"
#include "locomotives/lok.h"
#include "simulator/trains/told_detector.h"
#include "track/zone.h"

namespace zemblar::bench {

using Detector = simulator::ToldDetector;

/// Zones in a row, each with a detector.
inline std::vector<Zone*> row_of_zones(std::size_t count) {
  auto& layout = Layout::get();
  layout.new_document(false);
  std::vector<Zone*> zones;
  for (std::size_t i = 0; i < count; ++i) {
    zones.push_back(layout.get_blocks().add(new Zone));
    zones.back()->set_input(layout.get_devices().add(new Detector));
    if (i > 0) zones[i - 1]->right.connect(&zones[i]->left);
  }
  return zones;
}

inline Detector& detector_of(const Zone* zone) {
  return dynamic_cast<Detector&>(*zone->get_input());
}

}  // namespace zemblar::bench
