#include "diagram/view_link_node.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cassert>
#include <stdexcept>
#include <utility>

#include "core/layout.h"
#include "core/yaml_io.h"
#include "diagram/view.h"
#include "diagram/view_object.h"
#include "track/block.h"

namespace zemblar {

ViewLinkNode::~ViewLinkNode() {
  disconnect();
}

void ViewLinkNode::set_type(Type type) {
  if (type == type_) return;
  if (type_ != unset) throw std::logic_error("ViewLinkNode::set_type() called twice");
  type_ = type;
}

void ViewLinkNode::set_block_link(BlockLink* link) {
  if (block_link_) throw std::logic_error("ViewLinkNode::set_block_link() called twice");
  block_link_ = link;
  if (link_ && link->get_partner() && link->get_partner() != link_->block_link_) disconnect();
  block_link_changed_ =
      link->signal_changed().connect(sigc::mem_fun(*this, &ViewLinkNode::on_block_link_changed));
}

// --- Joining ---

bool ViewLinkNode::is_free_for(const ViewLinkNode& other) const {
  if (link_ && link_ != &other) return false;
  const auto* partner = block_link_ ? block_link_->get_partner() : nullptr;
  return !partner || partner == other.block_link_;
}

// False for two nodes of the same link, between which no train can pass.
bool ViewLinkNode::can_connect(const ViewLinkNode& other) const {
  const bool same = block_link_ && block_link_ == other.block_link_;
  return &other != this && !same && is_free_for(other) && other.is_free_for(*this);
}

void ViewLinkNode::connect(ViewLinkNode& other) {
  if (!can_connect(other)) return;
  join(other);
  refresh();
  if (get_object()) get_object()->node_moved(*this);
  // A node with a neighbour has no lock of its own.
  if (!has_neighbour() && !other.has_neighbour()) locked_ = other.locked_;
}

void ViewLinkNode::join(ViewLinkNode& other) {
  before_change();
  other.before_change();
  // The links emit their signals while they are being joined, before the nodes are joined.
  if (block_link_ && other.block_link_) block_link_->connect(other.block_link_);
  link_ = &other;
  other.link_ = this;
  pos = other.pos;
  moved();
  other.redraw();
}

void ViewLinkNode::disconnect() {
  if (!link_) return;
  before_change();
  link_->before_change();
  auto* partner = std::exchange(link_, nullptr);
  partner->link_ = nullptr;
  partner->refresh();
  partner->redraw();
  refresh();
  redraw();
}

void ViewLinkNode::on_block_link_changed() {
  redraw();
  if (link_ && block_link_->get_partner() != link_->block_link_) disconnect();
}

bool ViewLinkNode::is_joined() const {
  return block_link_ && block_link_->is_connected();
}

// --- Direction ---

void ViewLinkNode::refresh() {
  if (is_led()) {
    turn(direction_of_neighbours());
    if (link_ && !link_->is_led()) link_->take_direction_of_link();
  } else if (link_) {
    take_direction_of_link();
  }
}

void ViewLinkNode::take_direction_of_link() {
  turn(link_->type_ == type_ ? -link_->dir : link_->dir);
}

// Redraws the other node as well, whose tick depends on both directions.
void ViewLinkNode::turn(const Vector& direction) {
  if (direction == dir) return;
  ViewNode::turn(direction);
  if (link_) link_->redraw();
}

void ViewLinkNode::redraw() const {
  if (get_object()) get_object()->changed();
}

Vector ViewLinkNode::get_path_direction() const {
  if (!link_) return dir;
  return normalize(link_->type_ == type_ ? dir - link_->dir : dir + link_->dir);
}

void ViewLinkNode::set_locked(bool on) {
  if (link_ && link_->has_neighbour()) return;
  ViewNode::set_locked(on);
  if (!link_) return;
  link_->before_change();
  link_->locked_ = locked_;
}

Gtk::MenuItem* ViewLinkNode::get_menu_item() {
  return link_ && link_->has_neighbour() ? nullptr : ViewNode::get_menu_item();
}

void ViewLinkNode::drag(Part part, const Vector& position) {
  ViewNode::drag(part, position);
  if (!link_) return;
  if (part == body) {
    link_->before_change();
    link_->pos = pos;
    link_->moved();
    if (link_->get_object()) link_->get_object()->node_moved(*link_);
  }
  link_->refresh();
  refresh();
}

std::shared_ptr<const ViewTag> ViewLinkNode::make_tag(Part part) {
  return std::make_shared<Tag>(this, part);
}

// --- The file ---

void ViewLinkNode::save_more(YAML::Emitter& out) const {
  if (!link_) return;
  const auto& node = *link_;
  assert(node.get_object());
  assert(node.get_object()->get_view());
  const auto& view = *node.get_object()->get_view();
  assert(view.place_of(node.get_object()) < view.get_objects().size());
  const auto id = view.number_of(node.get_object());
  const auto* link = node.block_link_;
  assert(link);
  assert(link->get_block());
  out << YAML::Key << "link" << YAML::Value << YAML::Flow << YAML::BeginSeq << id
      << link->get_block()->get_link_name(link) << YAML::EndSeq;
}

// Joins in the second pass, when all objects exist. A missing partner must not make the load fail.
void ViewLinkNode::load(const YAML::Node& node) {
  ViewNode::load(node);
  const auto link = node["link"];
  if (!link || link.IsNull()) return disconnect();
  if (!link.IsSequence() || link.size() != 2) throw YAML::InvalidScalar(link.Mark());
  const auto index = read_fitting_int(link[0]);
  std::string name;
  link[1] >> name;
  if (!index) return;
  Layout::get().signal_post_resolve().connect(sigc::track_obj(
      [this, index = *index, name] {
        connect_to(index, name);
        return true;
      },
      *this));
}

// Joins without copying the lock: each node keeps the lock from the file, independent of the order
// of joins. A node with a lead keeps its direction from the file.
bool ViewLinkNode::connect_to(int object_index, const std::string& link_name) {
  const auto* view = get_object() ? get_object()->get_view() : nullptr;
  if (!view || object_index < 0) return false;
  auto* object = view->find_number(static_cast<unsigned>(object_index));
  auto* other = object ? object->get_link_node(link_name) : nullptr;
  if (!other || !can_connect(*other)) return false;
  join(*other);
  if (!get_lead() || dir == Vector{}) refresh();
  return true;
}

}  // namespace zemblar
