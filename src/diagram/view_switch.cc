#include "diagram/view_switch.h"

#include <utility>

#include "track/point_guard.h"

namespace zemblar {
namespace {

constexpr double grey = 0.5;

}  // namespace

void ViewSwitch::attach(PointBase& point) {
  point_ = &point;
  follow_end(point);
  state_changed_ = point.signal_state_changed().connect([this] { changed(); });
  // Redraws, because the tag tables of the displays still have tags of the removed state.
  state_removed_ = point.signal_child_removed().connect([this](zemblar::Object*) { changed(); });
}

std::vector<ViewSegment> ViewSwitch::segments() {
  std::vector<ViewSegment> segments;
  for (const auto& way : ways()) segments.push_back(way.segment);
  return segments;
}

std::vector<TrackPath> ViewSwitch::tracks() {
  std::vector<TrackPath> tracks;
  for (const auto& segment : segments()) tracks.push_back(path_of(segment));
  return tracks;
}

void ViewSwitch::draw_live(const Context& context) {
  std::vector<TrackPath> set;
  std::vector<TrackPath> others;
  for (const auto& way : ways()) {
    const bool current = point_ && way.state == point_->get_state();
    (current ? set : others).push_back(path_of(way.segment));
  }
  context->set_source_rgb(grey, grey, grey);
  stroke(context, std::move(others), TrackPaths::Bed::halo);
  context->set_source_rgb(0, 0, 0);
  stroke(context, std::move(set), TrackPaths::Bed::none);
  for (const auto* end : ends()) draw_tick(context, end->pos, end->get_path_direction());
}

// The way of the current state is on top, as in the drawing.
void ViewSwitch::draw_runtime_tags(const Context& context, SelectionTable& table) {
  for (const bool current : {false, true}) {
    for (const auto& way : ways()) {
      if ((point_ && way.state == point_->get_state()) != current) continue;
      add_tag(context, table, std::make_shared<StateTag>(this, way.state));
      paint_segment(context, way.segment);
    }
  }
}

std::vector<ViewSegment> ViewSwitch::stretches_of(const ViewTag& tag) {
  std::vector<ViewSegment> stretches;
  const auto* part = dynamic_cast<const StateTag*>(&tag);
  if (!part) return stretches;
  for (const auto& way : ways()) {
    if (way.state == part->state) stretches.push_back(way.segment);
  }
  return stretches;
}

void ViewSwitch::draw_body_tags(const Context& context, bool /*selected*/, SelectionTable& table) {
  for (const auto& way : ways()) {
    add_tag(context, table, std::make_shared<StateTag>(this, way.state));
    paint_segment(context, way.segment);
  }
}

// Setting the state sends its outputs and emits the signal that redraws the display.
void ViewSwitch::click(const ViewTag& tag, bool insists) {
  const auto* clicked = dynamic_cast<const StateTag*>(&tag);
  if (clicked && clicked->state && point_) set_by_hand(*point_, *clicked->state, insists);
}

void ViewSwitch::show_menu(const ViewTag& tag, guint32 time) {
  auto menu = std::make_unique<Gtk::Menu>();
  if (const auto* clicked = dynamic_cast<const StateTag*>(&tag)) {
    for (const auto& way : ways()) {
      if (way.state == clicked->state) add_shape_items(*menu, way.segment);
    }
  } else if (const auto* part = dynamic_cast<const ViewNode::Tag*>(&tag)) {
    add_node_items(*menu, *part->node);
  }
  add_order_items(*menu, *this);
  popup(std::move(menu), time);
}

}  // namespace zemblar
