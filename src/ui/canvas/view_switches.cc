#include "ui/canvas/view_switches.h"

#include <algorithm>

#include "core/i18n.h"
#include "diagram/view_switch.h"

namespace zemblar {
namespace {

constexpr double row_height = 32;  // diagram units

/// A context for measuring at zoom 1; its pixels are not used.
Cairo::RefPtr<Cairo::Context> measuring_context() {
  return Cairo::Context::create(Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, 1, 1));
}

SelectionTable tags_of(const Cairo::RefPtr<Cairo::Context>& context, ViewObj& drawn) {
  SelectionTable tags;
  drawn.draw_runtime_tags(context, tags);
  return tags;
}

struct Placed {
  ViewObj* drawn;
  Vector place;
};

void sort_by_rows(std::vector<Placed>& all) {
  std::ranges::stable_sort(all, {}, [](const Placed& one) { return one.place.y; });
  for (auto row = all.begin(); row != all.end();) {
    const double top = row->place.y;
    const auto next = std::find_if(
        row, all.end(), [top](const Placed& one) { return one.place.y > top + row_height; });
    std::stable_sort(row, next,
                     [](const Placed& a, const Placed& b) { return a.place.x < b.place.x; });
    row = next;
  }
}

const ViewTag* tag_of(const SelectionTable& tags, const PointState* state) {
  for (const auto& tag : tags) {
    const auto* way = dynamic_cast<const ViewSwitch::StateTag*>(tag.get());
    if (way && way->state == state) return way;
  }
  return nullptr;
}

}  // namespace

std::vector<ViewObj*> switches_of(const View& view) {
  const auto context = measuring_context();
  std::vector<Placed> found;
  for (const auto& object : view.get_objects()) {
    auto& drawn = *object.operator->();
    if (!dynamic_cast<PointBase*>(drawn.get_object()) || tags_of(context, drawn).empty()) continue;
    const auto box = drawn.runtime_box(context);
    found.push_back({&drawn, {(box.left + box.right) / 2, (box.top + box.bottom) / 2}});
  }
  sort_by_rows(found);
  std::vector<ViewObj*> switches;
  for (const auto& one : found) switches.push_back(one.drawn);
  return switches;
}

void click_next(ViewObj& drawn, bool insists) {
  const auto* point = dynamic_cast<PointBase*>(drawn.get_object());
  const auto tags = tags_of(measuring_context(), drawn);
  if (!point || tags.empty()) return;
  if (!dynamic_cast<const ViewSwitch::StateTag*>(tags.front().get())) {
    return drawn.click(*tags.front(), insists);
  }
  auto states = point->states();
  const auto current = std::ranges::find(states, point->get_state());
  if (current != states.end()) std::rotate(states.begin(), current + 1, states.end());
  for (const auto* state : states) {
    if (const auto* tag = tag_of(tags, state)) return drawn.click(*tag, insists);
  }
}

Glib::ustring describe_switch(const ViewObj& drawn) {
  const auto* point = dynamic_cast<PointBase*>(drawn.get_object());
  if (!point) return {};
  if (!point->get_state()) return point->get_name();
  return Glib::ustring::compose(_("%1: %2"), point->get_name(), point->get_state()->get_name());
}

}  // namespace zemblar
