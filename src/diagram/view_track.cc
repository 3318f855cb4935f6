#include "diagram/view_track.h"

#include <gtkmm/imagemenuitem.h>
#include <gtkmm/radiomenuitem.h>
#include <gtkmm/stock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "core/i18n.h"
#include "diagram/diagram_watcher.h"

namespace zemblar {
namespace {

/// Distance from the middle of the rail to the outermost pixel of ticks and arrows.
constexpr double widest = 12.0;
/// Wider than the rail, so that a click beside it hits.
constexpr double tag_width = 8.0;

std::array<PathStep, 2> steps_of(const ViewSegment& segment) {
  return {{{segment.start}, {segment.end, *segment.straight}}};
}

}  // namespace

void load_node(const YAML::Node& node, const char* key, ViewNode& target) {
  target.load(required(node, key));
}

void save_node(YAML::Emitter& out, const char* key, const ViewNode& node) {
  out << YAML::Key << key << YAML::Value;
  node.save(out);
}

void Occupancy::set_colour(const Cairo::RefPtr<Cairo::Context>& context) const {
  const bool known = lok != nullptr;
  context->set_source_rgb(!known && occupied ? 1 : 0, known || occupied ? 1 : 0, 0);
}

TrackPaths::Bed Occupancy::bed() const {
  return occupied && !lok ? TrackPaths::Bed::sleepers : TrackPaths::Bed::halo;
}

// --- Nodes and segments ---

void ViewTrack::on_leaving() {
  for (auto* end : ends()) end->disconnect();
}

void ViewTrack::set_up(ViewLinkNode& node, ViewLinkNode::Type type) {
  node.set_object(this);
  node.set_type(type);
}

void ViewTrack::find_straight_segments() {
  for (const auto& segment : segments()) {
    *segment.straight = !(segment.start->has_right && segment.end->has_left);
  }
}

// A node can have one neighbour on each side. If several straight segments share a side, the first
// one in order counts, so that opening a saved file gives the same neighbours.
void ViewTrack::join_neighbours() {
  for (const auto& segment : segments()) {
    segment.start->set_right_node(nullptr);
    segment.end->set_left_node(nullptr);
  }
  for (const auto& segment : segments()) {
    const bool room = !segment.start->get_right_node() && !segment.end->get_left_node();
    if (*segment.straight && room) segment.start->set_right_node(segment.end);
  }
}

bool ViewTrack::uses_handle(const ViewNode* node, bool right) {
  return std::ranges::any_of(segments(), [=](const ViewSegment& segment) {
    return !*segment.straight && (right ? segment.start : segment.end) == node;
  });
}

void ViewTrack::make_straight(const ViewSegment& segment) {
  before_change();
  *segment.straight = true;
  if (!uses_handle(segment.start, true)) segment.start->has_right = false;
  if (!uses_handle(segment.end, false)) segment.end->has_left = false;
  join_neighbours();
  for (auto* end : ends()) {
    if (end->get_lead()) end->refresh();
  }
  changed();
}

void ViewTrack::make_curved(const ViewSegment& segment) {
  if (!*segment.straight) return;
  before_change();
  auto& [start, end, straight] = segment;
  const auto third = (end->pos - start->pos) / 3;
  *straight = false;
  const bool were_neighbours = start->get_right_node() == end;
  if (were_neighbours) start->set_right_node(nullptr);
  // An end that no neighbour directs keeps the direction of the straight line.
  for (auto* node : {start, end}) {
    if (dynamic_cast<ViewLinkNode*>(node) && !node->has_neighbour() && third.length() > 0) {
      node->dir = normalize(third);
    }
  }
  start->set_right_handle(third.length());
  end->set_left_handle(third.length());
  join_neighbours();
  // A joined node determines the direction, as when a file is opened.
  start->refresh();
  end->refresh();
  changed();
}

TrackPath ViewTrack::path_of(const std::vector<ViewSegment>& segments) {
  TrackPath path;
  if (segments.empty()) return path;
  path.push_back({segments.front().start});
  for (const auto& segment : segments) path.push_back({segment.end, *segment.straight});
  return path;
}

TrackPath ViewTrack::path_of(const ViewSegment& segment) {
  const auto steps = steps_of(segment);
  return {steps.begin(), steps.end()};
}

// --- Drawing ---

void ViewTrack::stroke(const Context& context, std::vector<TrackPath> tracks, TrackPaths::Bed bed) {
  TrackPaths paths;
  for (auto& track : tracks) paths.add_path(std::move(track));
  paths.stroke_paths(context, bed);
}

void ViewTrack::draw_glow(const Context& context) {
  TrackPaths paths;
  for (const auto& track : tracks()) paths.add_path(track);
  paths.stroke_glow(context);
}

void ViewTrack::draw_plain(const Context& context, bool selected) {
  context->set_source_rgb(0, 0, 0);
  stroke(context, tracks(), selected ? TrackPaths::Bed::halo : TrackPaths::Bed::none);
  const auto inner = inner_nodes();
  if (selected) {
    for (const auto* node : ends()) node->draw_handles(context);
    for (const auto* node : inner) node->draw_handles(context);
    for (const auto* node : inner) node->draw(context);
  }
  for (const auto* node : ends()) node->draw(context);
}

PixelBox ViewTrack::runtime_box(const Context& context) {
  PixelBox box;
  for (const auto& segment : segments()) box = box.united(box_of(steps_of(segment), widest));
  return to_pixels(context, box);
}

// --- Tags ---

void ViewTrack::draw_link_tags(const Context& context, bool /*selected*/, SelectionTable& table) {
  for (auto* node : ends()) node->draw_tag(context, table);
}

void ViewTrack::draw_handle_tags(const Context& context, bool selected, SelectionTable& table) {
  if (!selected) return;
  auto nodes = inner_nodes();
  for (auto* node : nodes) node->draw_tag(context, table);
  for (auto* node : ends()) nodes.push_back(node);
  for (auto* node : nodes) {
    node->draw_left_tag(context, table);
    node->draw_right_tag(context, table);
  }
}

// Includes ends whose blocks are already joined: joining these changes only the diagram.
void ViewTrack::draw_link_target_tags(const Context& context, SelectionTable& table,
                                      const ViewLinkNode& dragged) {
  for (auto* node : ends()) {
    if (!node->get_link() && dragged.can_connect(*node)) node->draw_tag(context, table);
  }
}

std::vector<ViewSegment> ViewTrack::stretches_of(const ViewTag& tag) {
  const auto* part = dynamic_cast<const ViewTagInt*>(&tag);
  const auto all = segments();
  if (!part || part->value >= all.size()) return {};
  return {all[part->value]};
}

void ViewTrack::stroke_stretches(const Context& context, const ViewTag& tag) {
  context->set_line_width(TrackPaths::rail_width);
  for (const auto& stretch : stretches_of(tag)) {
    context->begin_new_path();
    trace(context, path_of(stretch));
    context->stroke();
  }
}

void ViewTrack::paint_segment(const Context& context, const ViewSegment& segment) {
  context->set_line_width(tag_width);
  context->begin_new_path();
  trace(context, steps_of(segment));
  context->stroke();
}

void ViewTrack::drag_move(const ViewTag& tag, const Vector& position) {
  if (const auto* dragged = dynamic_cast<const ViewNode::Tag*>(&tag)) {
    dragged->node->drag(dragged->part, position);
  } else {
    ViewObj::drag_move(tag, position);
  }
}

// Moving a joined end moves its partner as well.
void ViewTrack::move_by(const Vector& delta) {
  before_change();
  const auto moved = [&](const ViewNode& node) { return on_grid(node.pos + delta, 0); };
  for (auto* node : inner_nodes()) node->pos = within_diagram(moved(*node));
  for (auto* node : ends()) node->drag(ViewNode::body, moved(*node));
}

// --- Alignment ---

// A straight segment that deviates by less than a step becomes horizontal or vertical, starting at
// its first node. Nodes that would get the same place do not move.
void ViewTrack::align(double step) {
  before_change();
  auto nodes = inner_nodes();
  for (auto* end : ends()) nodes.push_back(end);
  std::map<ViewNode*, Vector> places;
  for (auto* node : nodes) places[node] = on_grid(node->pos, step);
  for (const auto& segment : segments()) {
    if (!*segment.straight) continue;
    const auto across = segment.end->pos - segment.start->pos;
    const bool level = std::abs(across.x) > std::abs(across.y);
    if (level && std::abs(across.y) < step) places[segment.end].y = places[segment.start].y;
    if (!level && std::abs(across.x) < step) places[segment.end].x = places[segment.start].x;
  }
  for (auto* node : nodes) {
    const auto shared =
        std::ranges::count(places, places[node], [](auto& one) { return one.second; });
    if (shared == 1) node->drag(ViewNode::body, places[node]);
  }
  for (auto* node : nodes) level_direction(*node);
  changed();
}

// Turns a direction by up to some ten degrees to a horizontal or vertical one, unless a neighbour
// or a lead determines it.
void ViewTrack::level_direction(ViewNode& node) {
  constexpr double least_cosine = 0.985;
  if (node.is_led() || node.is_locked()) return;
  const auto& dir = node.dir;
  const Vector level{std::copysign(1.0, dir.x), 0};
  const Vector upright{0, std::copysign(1.0, dir.y)};
  const auto axis = std::abs(dir.x) > std::abs(dir.y) ? level : upright;
  if (dir.dot(axis) < least_cosine) return;
  if (node.has_right) {
    node.drag(ViewNode::right_handle, node.pos + axis * node.right);
  } else if (node.has_left) {
    node.drag(ViewNode::left_handle, node.pos - axis * node.left);
  }
}

Vector ViewTrack::get_place() {
  Vector sum;
  const auto nodes = ends();
  for (const auto* node : nodes) sum += node->pos;
  return sum / static_cast<double>(nodes.size());
}

std::vector<ViewObj*> ViewTrack::dependants() {
  std::vector<ViewObj*> joined;
  for (const auto* node : ends()) {
    auto* other = node->get_link() ? node->get_link()->get_object() : nullptr;
    if (other && other->get_view() == get_view()) joined.push_back(other);
  }
  return joined;
}

// --- Menus ---

void ViewTrack::add_shape_items(Gtk::Menu& menu, const ViewSegment& segment) {
  Gtk::RadioMenuItem::Group group;
  auto* straight = Gtk::manage(new Gtk::RadioMenuItem(group, _("Straight Line")));
  auto* curved = Gtk::manage(new Gtk::RadioMenuItem(group, _("Curved Line")));
  (*segment.straight ? straight : curved)->set_active();
  // Both items emit the signal when the selection changes.
  const auto connect = [this, start = segment.start, end = segment.end](auto* item, auto reshape,
                                                                        const char* name) {
    item->signal_toggled().connect(while_drawn(*this, [=, this] {
      if (!item->get_active()) return;
      DiagramWatcher::name_step(name);
      reshape_between(start, end, reshape);
    }));
  };
  connect(straight, &ViewTrack::make_straight, _("Straighten “%1”"));
  connect(curved, &ViewTrack::make_curved, _("Curve “%1”"));
  menu.append(*straight);
  menu.append(*curved);
}

// Looks the segment up again, because nodes may be added or removed while the menu is open.
void ViewTrack::reshape_between(const ViewNode* start, const ViewNode* end,
                                void (ViewTrack::*reshape)(const ViewSegment&)) {
  for (const auto& segment : segments()) {
    if (segment.start == start && segment.end == end) return (this->*reshape)(segment);
  }
}

void ViewTrack::part_blocks_at(const ViewNode* node) {
  const auto all = ends();
  const auto end = std::ranges::find(all, node);
  if (end != all.end() && (*end)->get_block_link()) (*end)->get_block_link()->disconnect();
}

bool ViewTrack::add_node_items(Gtk::Menu& menu, ViewNode& node) {
  auto* end = dynamic_cast<ViewLinkNode*>(&node);
  auto* link = end ? end->get_block_link() : nullptr;
  const bool joined = link && link->is_connected();
  if (joined) {
    auto* item = Gtk::manage(new Gtk::ImageMenuItem(Gtk::Stock::DISCONNECT));
    item->signal_activate().connect(while_drawn(*this, [this, end] {
      DiagramWatcher::name_step(_("Disconnect “%1”"));
      part_blocks_at(end);
    }));
    menu.append(*item);
  }
  auto* lock = node.get_menu_item();
  if (lock) menu.append(*lock);
  return joined || lock;
}

}  // namespace zemblar
