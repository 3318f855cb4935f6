#include "diagram/view_crossing.h"

#include "diagram/view_class.h"

namespace zemblar {
namespace {

const ViewClass::Registration registration(
    view_class<ViewCrossing, Crossing>("!view-crossing", Section::blocks,
                                       {.place = 2,
                                        .icon = "orvane-crossing",
                                        .label = N_("Crossing"),
                                        .name = N_("_Crossing"),
                                        .add_new = N_("Add New Crossing"),
                                        .add_existing = N_("Add Existing Crossing"),
                                        .heading = N_("Crossings")}));

}  // namespace

ViewCrossing::ViewCrossing() {
  set_up(corners_[ViewCorners::top_left], ViewLinkNode::inward);
  set_up(corners_[ViewCorners::bottom_left], ViewLinkNode::inward);
  set_up(corners_[ViewCorners::top_right], ViewLinkNode::outward);
  set_up(corners_[ViewCorners::bottom_right], ViewLinkNode::outward);
}

ViewCrossing::ViewCrossing(Crossing& crossing, const Vector& place) : ViewCrossing() {
  corners_.place(place);
  attach(crossing);
  join_neighbours();
}

ViewCrossing::ViewCrossing(const YAML::Node& node) : ViewCrossing() {
  load_shown<Crossing>(node, "crossing", [this](Crossing& crossing) { attach(crossing); });
  corners_.load(node);
  find_straight_segments();
  join_neighbours();
}

void ViewCrossing::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("view-crossing") << YAML::BeginMap;
  out << YAML::Key << "crossing" << YAML::Value << static_cast<const zemblar::Object*>(crossing_);
  corners_.save(out);
  out << YAML::EndMap;
}

std::vector<ViewSegment> ViewCrossing::segments() {
  using C = ViewCorners;
  return {{&corners_[C::top_left], &corners_[C::bottom_right], &straight_[0]},
          {&corners_[C::bottom_left], &corners_[C::top_right], &straight_[1]}};
}

std::vector<TrackPath> ViewCrossing::tracks() {
  std::vector<TrackPath> tracks;
  for (const auto& segment : segments()) tracks.push_back(path_of(segment));
  return tracks;
}

void ViewCrossing::draw_body_tags(const Context& context, bool /*selected*/,
                                  SelectionTable& table) {
  unsigned index = 0;
  for (const auto& segment : segments()) {
    add_tag(context, table, std::make_shared<SegmentTag>(this, index++));
    paint_segment(context, segment);
  }
}

void ViewCrossing::show_menu(const ViewTag& tag, guint32 time) {
  auto menu = std::make_unique<Gtk::Menu>();
  if (const auto* segment = dynamic_cast<const SegmentTag*>(&tag)) {
    add_shape_items(*menu, segments().at(segment->value));
  } else if (const auto* part = dynamic_cast<const ViewNode::Tag*>(&tag)) {
    add_node_items(*menu, *part->node);
  }
  add_order_items(*menu, *this);
  popup(std::move(menu), time);
}

// --- The railway as it is now ---

void ViewCrossing::attach(Crossing& crossing) {
  crossing_ = &crossing;
  follow_end(crossing);
  corners_.attach(crossing.links);
  followed_.emplace_back(crossing.signal_occupied().connect([this] { follow(); }));
  followed_.emplace_back(crossing.signal_lok_changed().connect([this] { follow(); }));
  shown_ = Occupancy(crossing);
}

void ViewCrossing::follow() {
  const Occupancy now(*crossing_);
  if (std::exchange(shown_, now) != now) changed();
}

void ViewCrossing::draw_live(const Context& context) {
  shown_.set_colour(context);
  stroke(context, tracks(), shown_.bed());
}

}  // namespace zemblar
