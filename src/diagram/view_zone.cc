#include "diagram/view_zone.h"

#include <cassert>

#include "core/i18n.h"
#include "diagram/diagram_watcher.h"
#include "diagram/view_class.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

/// Distance from the place of a new one to its ends.
constexpr double half_length = 40.0;

const ViewClass::Registration registration(
    view_class<ViewZone, Zone>("!view-zone", Section::blocks,
                               {.place = 1,
                                .icon = "orvane-zone",
                                .label = N_("Zone"),
                                .name = N_("_Zone"),
                                .add_new = N_("Add New Zone (Block Section)"),
                                .add_existing = N_("Add Existing Zone (Block Section)"),
                                .heading = N_("Zones")}));

/// The link of the block towards which the locomotive travels; null when the block is not in the
/// locomotive's span.
const BlockLink* heading_in(const Lok& lok, const Block& block) {
  CircleGuard guard;
  for (auto* link = lok.front; link && !guard.came_round(link);) {
    if (link->get_block() == &block) return link;
    auto* near = link->get_opposite();
    if (near == lok.back) break;
    link = near ? near->get_partner() : nullptr;
  }
  return nullptr;
}

/// Puts the node on the segment, at the point nearest to `place` or in the middle, without changing
/// the shape of the segment.
void divide(const ViewSegment& segment, ViewNode& node, const std::optional<Vector>& place) {
  const PathStep from{segment.start};
  const PathStep to{segment.end, *segment.straight};
  const double share = place ? share_near(from, to, *place) : 0.5;
  const auto on_track = place_on_step(from, to, share);
  node.dir = on_track.dir;
  node.pos = to.straight ? on_grid(on_track.pos, 0) : on_track.pos;
  if (to.straight) return;
  const auto curves = divided(from, to, share);
  node.set_left_handle(curves.before);
  node.set_right_handle(curves.after);
  segment.start->set_right_handle(curves.start_handle);
  segment.end->set_left_handle(curves.end_handle);
}

}  // namespace

ViewZone::ViewZone() {
  set_up(left_, ViewLinkNode::inward);
  set_up(right_, ViewLinkNode::outward);
}

ViewZone::ViewZone(Zone& zone, const Vector& place) : ViewZone() {
  left_.pos = place - Vector{half_length, 0};
  right_.pos = place + Vector{half_length, 0};
  attach(zone);
  join_neighbours();
}

ViewZone::ViewZone(const YAML::Node& node) : ViewZone() {
  load_shown<Zone>(node, "zone", [this](Zone& zone) { attach(zone); });
  load_node(node, "left", left_);
  load_node(node, "right", right_);
  for (const auto& entry : node["nodes"]) {
    auto& added = *inner_.emplace_back(std::make_unique<ViewNode>());
    added.set_object(this);
    added.load(entry);
  }
  straight_.resize(inner_.size() + 1);
  find_straight_segments();
  join_neighbours();
}

void ViewZone::save(YAML::Emitter& out) const {
  const auto* zone = zone_;
  assert(zone);
  out << YAML::LocalTag("view-zone") << YAML::BeginMap;
  out << YAML::Key << "zone" << YAML::Value << static_cast<const zemblar::Object*>(zone);
  save_node(out, "left", left_);
  save_node(out, "right", right_);
  out << YAML::Key << "nodes" << YAML::Value << YAML::BeginSeq;
  for (const auto& node : inner_) node->save(out);
  out << YAML::EndSeq << YAML::EndMap;
}

ViewLinkNode* ViewZone::get_link_node(const std::string& name) {
  return name == "left" ? &left_ : name == "right" ? &right_ : nullptr;
}

std::vector<ViewNode*> ViewZone::inner_nodes() {
  std::vector<ViewNode*> nodes;
  for (const auto& node : inner_) nodes.push_back(node.get());
  return nodes;
}

std::vector<ViewSegment> ViewZone::segments() {
  std::vector<ViewSegment> segments;
  ViewNode* start = &left_;
  for (std::size_t i = 0; i < straight_.size(); ++i) {
    ViewNode* end = i < inner_.size() ? inner_[i].get() : &right_;
    segments.push_back({start, end, &straight_[i]});
    start = end;
  }
  return segments;
}

// --- Nodes ---

void ViewZone::add_node(unsigned segment, const std::optional<Vector>& place) {
  if (segment >= straight_.size()) return;
  before_change();
  const auto whole = segments()[segment];
  const bool straight = *whole.straight;
  if (whole.start->get_right_node() == whole.end) whole.start->set_right_node(nullptr);
  auto node = std::make_unique<ViewNode>();
  node->set_object(this);
  divide(whole, *node, place);
  inner_.insert(inner_.begin() + segment, std::move(node));
  straight_.insert(straight_.begin() + segment, straight);
  join_neighbours();
  changed();
}

void ViewZone::delete_node(unsigned index) {
  if (index >= inner_.size()) return;
  before_change();
  const auto both = segments();
  auto* start = both[index].start;
  auto* end = both[index + 1].end;
  const bool straight = straight_[index] && straight_[index + 1];
  // The destructor of the node updates its neighbours, so the node must not be in the chain any
  // more.
  const auto ended = std::move(inner_[index]);
  inner_.erase(inner_.begin() + index);
  straight_.erase(straight_.begin() + index);
  straight_[index] = straight;
  if (!straight) {
    const double third = (end->pos - start->pos).length() / 3;
    if (!start->has_right) start->set_right_handle(third);
    if (!end->has_left) end->set_left_handle(third);
  }
  join_neighbours();
  changed();
}

void ViewZone::show_menu(const ViewTag& tag, guint32 time) {
  auto menu = std::make_unique<Gtk::Menu>();
  if (const auto* segment = dynamic_cast<const SegmentTag*>(&tag)) {
    const auto index = segment->value;
    add_shape_items(*menu, segments().at(index));
    add_item(*menu, *this, _("Add Node"), [this, index, place = MenuCall::pointed()] {
      DiagramWatcher::name_step(_("Add a Node to “%1”"));
      add_node(index, place);
    });
  } else if (const auto* part = dynamic_cast<const ViewNode::Tag*>(&tag)) {
    add_node_items(*menu, *part->node);
    for (unsigned i = 0; i < inner_.size(); ++i) {
      if (inner_[i].get() != part->node) continue;
      add_item(*menu, *this, _("Delete Node"), [this, i] {
        DiagramWatcher::name_step(_("Delete a Node of “%1”"));
        delete_node(i);
      });
    }
  }
  add_order_items(*menu, *this);
  popup(std::move(menu), time);
}

void ViewZone::draw_body_tags(const Context& context, bool /*selected*/, SelectionTable& table) {
  unsigned index = 0;
  for (const auto& segment : segments()) {
    add_tag(context, table, std::make_shared<SegmentTag>(this, index++));
    paint_segment(context, segment);
  }
}

// --- The railway as it is now ---

void ViewZone::attach(Zone& zone) {
  zone_ = &zone;
  follow_end(zone);
  left_.set_block_link(&zone.left);
  right_.set_block_link(&zone.right);
  followed_.emplace_back(zone.signal_occupied().connect([this] { follow(); }));
  followed_.emplace_back(zone.signal_lok_changed().connect([this] { follow(); }));
  follow();
}

void ViewZone::follow() {
  if (zone_->get_lok() != shown_.occupancy.lok) follow_lok(zone_->get_lok());
  const auto now = live();
  if (std::exchange(shown_, now) != now) changed();
}

void ViewZone::follow_lok(Lok* lok) {
  place_changed_ = {};
  if (lok) place_changed_ = lok->signal_place_changed().connect([this] { follow(); });
}

ViewZone::Live ViewZone::live() const {
  Live live{Occupancy(*zone_), 0};
  const auto* lok = live.occupancy.lok;
  if (!lok || !lok->orientation_known) return live;
  const auto* link = heading_in(*lok, *zone_);
  live.heading = link == &zone_->right ? 1 : link == &zone_->left ? -1 : 0;
  return live;
}

void ViewZone::draw_live(const Context& context) {
  shown_.occupancy.set_colour(context);
  stroke(context, tracks(), shown_.occupancy.bed());
  if (shown_.heading != 0) draw_arrow(context);
}

void ViewZone::draw_arrow(const Context& context) {
  const auto middle = middle_of(tracks().front());
  draw_travel_arrow(context, middle.pos, middle.dir * shown_.heading);
}

}  // namespace zemblar
