#include "track/point_overlay.h"

#include <algorithm>

#include "track/point_base.h"
#include "track/point_guard.h"

namespace zemblar {
namespace {

/// The oldest first.
std::list<PointOverlay*>& levels() {
  static auto* all = new std::list<PointOverlay*>;  // never destroyed: runs may end at exit
  return *all;
}

}  // namespace

PointOverlay::Entry::Entry(PointBase& set_point) : point(&set_point) {
  point_ended = set_point.signal_deleted().connect([this] { point = nullptr; });
}

void PointOverlay::Entry::watch_state(PointState& set_state) {
  state = &set_state;
  state_ended = set_state.signal_deleted().connect([this] { state = nullptr; });
}

void PointOverlay::Entry::watch_former(PointState* below) {
  former = below;
  former_ended.disconnect();
  if (below) former_ended = below->signal_deleted().connect([this] { former = nullptr; });
}

PointOverlay::PointOverlay() {
  levels().push_back(this);
}

PointOverlay::~PointOverlay() {
  withdraw();
}

void PointOverlay::withdraw() {
  levels().remove(this);
}

PointOverlay::Entry* PointOverlay::find(const PointBase& point) {
  const auto found =
      std::ranges::find_if(entries_, [&](const Entry& entry) { return entry.point == &point; });
  return found == entries_.end() ? nullptr : &*found;
}

PointOverlay::Entry* PointOverlay::find_above(const PointBase& point) {
  const auto self = std::ranges::find(levels(), this);
  if (self == levels().end()) return nullptr;
  for (auto level = std::next(self); level != levels().end(); ++level) {
    if (auto* entry = (*level)->find(point)) return entry;
  }
  return nullptr;
}

// Under a later level, the state is only what the point goes back to when that one is removed.
void PointOverlay::set(PointBase& point, PointState& state) {
  auto* above = find_above(point);
  if (!above && !lets_script_set(point, state)) return;
  auto* entry = find(point);
  if (!entry) {
    entry = &entries_.emplace_back(point);
    entry->watch_former(above ? above->former : point.get_state());
  }
  entry->watch_state(state);
  if (above) return above->watch_former(&state);
  point.set_state(&state);
}

// A handler of a point's change may end points and states, and remove other levels.
void PointOverlay::remove() {
  for (auto& entry : entries_) {
    auto* above = entry.point ? find_above(*entry.point) : nullptr;
    if (!above) continue;
    above->watch_former(entry.former);
    entry.point = nullptr;
  }
  withdraw();
  for (const auto& entry : entries_) {
    const bool is_in_force = entry.point && entry.state && entry.point->get_state() == entry.state;
    if (!is_in_force || !entry.former || !lets_script_set(*entry.point, *entry.former)) continue;
    entry.point->set_state(entry.former);
  }
}

}  // namespace zemblar
