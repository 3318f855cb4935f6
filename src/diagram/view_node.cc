#include "diagram/view_node.h"

#include <gtkmm/checkmenuitem.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "core/i18n.h"
#include "core/yaml_io.h"
#include "diagram/diagram_watcher.h"
#include "diagram/view_object.h"

namespace zemblar {
namespace {

constexpr double radius = 4.0;
constexpr double outline = 1.5;
static_assert(ViewNode::reach == radius + outline / 2);
constexpr double grey = 0.75;
constexpr double half_square = 4.0;
constexpr double rounding = 1e-9;
const std::vector<double> handle_dashes = {4.0};

}  // namespace

ViewNode::Tag::Tag(ViewNode* tagged, Part tagged_part)
    : ViewTag(tagged->get_object()), node(tagged), part(tagged_part) {}

ViewNode::~ViewNode() {
  object_ = nullptr;
  set_left_node(nullptr);
  set_right_node(nullptr);
}

void ViewNode::set_object(ViewObj* object) {
  if (object_) throw std::logic_error("ViewLinkNode::set_object() called twice");
  object_ = object;
}

// --- Neighbours ---

void ViewNode::set_left_node(ViewNode* node) {
  if (node == left_node_) return;
  before_change();
  if (left_node_) left_node_->before_change();
  if (node) node->before_change();
  if (auto* former = std::exchange(left_node_, node)) {
    former->right_node_ = nullptr;
    former->refresh();
  }
  if (node) {
    if (node->right_node_) node->right_node_->before_change();
    if (auto* other = std::exchange(node->right_node_, this)) other->left_node_ = nullptr;
    locked_ = false;
    node->locked_ = false;
    node->refresh();
  }
  refresh();
}

void ViewNode::set_right_node(ViewNode* node) {
  if (node) return node->set_left_node(this);
  if (right_node_) right_node_->set_left_node(nullptr);
}

Vector ViewNode::direction_of_neighbours() const {
  if (!has_neighbour() && lead_) return normalize(pos - lead_->pos);
  return normalize((right_node_ ? right_node_->pos : pos) - (left_node_ ? left_node_->pos : pos));
}

void ViewNode::refresh() {
  if (is_led()) turn(direction_of_neighbours());
}

void ViewNode::turn(const Vector& direction) {
  if (direction == dir) return;
  before_change();
  dir = direction;
  if (object_) object_->changed();
}

void ViewNode::moved() {
  if (left_node_) left_node_->refresh();
  if (right_node_) right_node_->refresh();
  if (object_) object_->changed();
}

bool ViewNode::is_locked() const {
  return has_neighbour() || locked_;
}

void ViewNode::before_change() const {
  if (object_) object_->before_change();
}

void ViewNode::set_locked(bool on) {
  before_change();
  locked_ = on && !is_led();
}

Gtk::MenuItem* ViewNode::get_menu_item() {
  return is_led() ? nullptr : make_lock_item();
}

Gtk::MenuItem* ViewNode::make_lock_item() {
  auto* item = Gtk::manage(new Gtk::CheckMenuItem(_("Lock Angle")));
  item->set_active(is_locked());
  item->signal_toggled().connect(sigc::track_obj(
      [this, item] {
        DiagramWatcher::name_step(item->get_active() ? _("Lock an Angle of “%1”")
                                                     : _("Unlock an Angle of “%1”"));
        set_locked(item->get_active());
      },
      *this));
  return item;
}

// --- Dragging ---

void ViewNode::drag(Part part, const Vector& position) {
  before_change();
  const auto delta = position - pos;
  if (part == body) {
    pos = within_diagram(position);
    moved();
    refresh();
    if (object_) object_->node_moved(*this);
  } else if (part == left_handle) {
    drag_handle(left, -delta);
  } else {
    drag_handle(right, delta);
  }
  if (object_) object_->changed();
}

/// `delta` is the vector to the pointer, negated for the left handle.
void ViewNode::drag_handle(double& length, const Vector& delta) {
  if (is_locked()) {
    length = dir.dot(delta);
  } else {
    length = delta.length();
    if (length > 0) dir = normalize(delta);
  }
  length = std::clamp(length, shortest_handle, diagram_limit);
}

void ViewNode::set_left_handle(double length) {
  before_change();
  has_left = true;
  left = std::clamp(length, shortest_handle, diagram_limit);
}

void ViewNode::set_right_handle(double length) {
  before_change();
  has_right = true;
  right = std::clamp(length, shortest_handle, diagram_limit);
}

// --- Drawing ---

void ViewNode::draw(const Cairo::RefPtr<Cairo::Context>& context) const {
  context->begin_new_path();
  context->arc(pos.x, pos.y, radius, 0, 2 * M_PI);
  if (is_joined()) {
    context->set_source_rgb(0.25, 0.25, 1.0);
  } else {
    context->set_source_rgb(grey, grey, grey);
  }
  context->fill_preserve();
  context->set_source_rgb(0, 0, 0);
  context->set_line_width(outline);
  context->stroke();
}

void ViewNode::draw_handles(const Cairo::RefPtr<Cairo::Context>& context) const {
  const auto draw_one = [&](const Vector& place) {
    context->begin_new_path();
    context->move_to(pos.x, pos.y);
    context->line_to(place.x, place.y);
    context->set_source_rgb(0, 0, 0);
    context->set_line_width(1.0);
    context->set_dash(handle_dashes, 0);
    context->stroke();
    context->unset_dash();
    draw_handle_square(context, place);
    context->set_source_rgb(1, 1, 1);
    context->fill_preserve();
    context->set_source_rgb(0, 0, 0);
    context->stroke();
  };
  if (has_left) draw_one(left_point());
  if (has_right) draw_one(right_point());
}

void ViewNode::draw_handle_square(const Cairo::RefPtr<Cairo::Context>& context,
                                  const Vector& place) const {
  const auto along = dir * half_square;
  const auto across = dir.normal() * half_square;
  context->begin_new_path();
  for (const auto& corner : {along + across, along - across, -along - across, across - along}) {
    const auto point = place + corner;
    context->line_to(point.x, point.y);
  }
  context->close_path();
}

std::shared_ptr<const ViewTag> ViewNode::make_tag(Part part) {
  return std::make_shared<Tag>(this, part);
}

void ViewNode::draw_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table) {
  add_tag(context, table, make_tag(body));
  context->begin_new_path();
  context->arc(pos.x, pos.y, reach, 0, 2 * M_PI);
  context->fill();
}

void ViewNode::draw_left_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table) {
  if (!has_left) return;
  add_tag(context, table, make_tag(left_handle));
  draw_handle_square(context, left_point());
  context->fill();
}

void ViewNode::draw_right_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table) {
  if (!has_right) return;
  add_tag(context, table, make_tag(right_handle));
  draw_handle_square(context, right_point());
  context->fill();
}

// --- The file ---

void ViewNode::load(const YAML::Node& node) {
  required(node, "pos") >> pos;
  pos = within_diagram(pos);
  if (node["dir"]) {
    node["dir"] >> dir;
    // A direction of length 1 is not normalised, so that its digits stay as written.
    if (std::abs(dir.length() - 1) > rounding) dir = normalize(dir);
  }
  has_left = static_cast<bool>(node["left"]);
  has_right = static_cast<bool>(node["right"]);
  read_key(node, "left", left);
  read_key(node, "right", right);
  if (has_left) left = std::clamp(left, shortest_handle, diagram_limit);
  if (has_right) right = std::clamp(right, shortest_handle, diagram_limit);
  read_key(node, "locked", locked_);
}

void ViewNode::save(YAML::Emitter& out) const {
  out << YAML::BeginMap << YAML::Key << "pos" << YAML::Value << pos;
  if (!is_locked() || locked_) out << YAML::Key << "dir" << YAML::Value << dir;
  if (has_left) out << YAML::Key << "left" << YAML::Value << shortest_text(left);
  if (has_right) out << YAML::Key << "right" << YAML::Value << shortest_text(right);
  if (locked_) out << YAML::Key << "locked" << YAML::Value << true;
  save_more(out);
  out << YAML::EndMap;
}

}  // namespace zemblar
