#include "core/object.h"

#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <cassert>

#include "core/alive_guard.h"
#include "core/change_count.h"
#include "core/document_class.h"
#include "core/document_watcher.h"
#include "core/entry_change.h"
#include "core/layout.h"
#include "core/panel_factory.h"
#include "core/property.h"
#include "core/sibling_names.h"
#include "core/yaml_io.h"

namespace zemblar {

Glib::ustring without_control_characters(const Glib::ustring& text) {
  std::string plain = text.raw();
  for (auto& c : plain) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = ' ';
  }
  return plain;
}

Object::Object(const Glib::ustring& name_format)
    : name_format_(name_format),
      name_(Glib::ustring::compose(name_format, 1)),
      node_{nullptr, this} {
  node_.gnode = g_node_new(&node_);
  register_property<Glib::ustring>(this, "name", &Object::get_name, &Object::set_name);
  register_property<bool>(this, "deletable", &Object::get_deletable);
}

Object::~Object() {
  leave_parent();
  // Children are still here when a constructor has failed, or when one of them is being destroyed
  // further down the stack and will finish by itself.
  while (auto* child = of(node_.gnode->children)) {
    child->leave_parent();
    if (!child->deleting_) delete child;
  }
  g_node_destroy(node_.gnode);
}

Object* Object::of(const GNode* node) {
  return node ? static_cast<Node*>(node->data)->object : nullptr;
}

SiblingNames& Object::names() {
  if (!names_) names_ = std::make_unique<SiblingNames>();
  return *names_;
}

Object* Object::find_child(const Glib::ustring& name) const {
  return names_ ? names_->find(name) : nullptr;
}

void Object::attach(Object* child, int position) {
  before_change();
  ChangeCount::add(Change::structure);
  if (child->name_.empty() || find_child(child->name_)) find_free_name(child);
  link(child, position);
  const auto* root = g_node_get_root(node_.gnode);
  if (!Layout::exists() || of(root) != &Layout::get()) return;
  if (auto* watcher = DocumentWatcher::get()) watcher->added(*child);
  announce_tree(child);
}

void Object::link(Object* child, int position) {
  if (position < 0) {
    g_node_insert_after(node_.gnode, last_child_, child->node_.gnode);
  } else {
    g_node_insert(node_.gnode, position, child->node_.gnode);
  }
  if (!child->node_.gnode->next) last_child_ = child->node_.gnode;
  names().insert(child->name_, child);
}

bool Object::can_move_to(const Object& parent) {
  const auto* container = get_parent();
  return container && container->can_contain(this) && parent.can_contain(this);
}

// The name changes last, when the object is under the new parent and can be found there by name.
void Object::move_to(Object& parent, unsigned position) {
  assert(&parent != this && !g_node_is_ancestor(node_.gnode, parent.node_.gnode));
  const bool stays = get_parent() == &parent;
  const auto last = parent.child_count() - (stays ? 1 : 0);
  const auto place = static_cast<int>(std::min(position, last));
  if (deleting_ || parent.deleting_ || (stays && get_position() == place)) return;
  if (auto* watcher = DocumentWatcher::get()) watcher->before_move(*this, parent);
  leave_parent();
  parent.link(this, place);
  if (parent.find_child(name_) != this) parent.find_free_name(this);
  if (Layout::exists()) Layout::get().signal_object_moved().emit(this);
  parent.signal_child_moved_.emit(this);
}

void Object::before_change() {
  ChangeCount::add(Change::edit);
  if (auto* watcher = DocumentWatcher::get()) watcher->before_change(*this);
}

void Object::find_free_name(Object* child) {
  child->set_name(names().free_name(child->name_format_));
}

void Object::announce(Object* child) {
  on_child_added(child);
  Layout::get().signal_object_added().emit(child);
  signal_child_added_.emit(child);
}

void Object::announce_tree(Object* child) {
  announce(child);
  for (auto* grandchild : *child) child->announce_tree(grandchild);
}

void Object::set_name(const Glib::ustring& wanted) {
  const auto name = without_control_characters(wanted);
  if (name.empty() || name.raw() == name_.raw()) return;
  auto* parent = get_parent();
  if (parent && parent->find_child(name)) return;
  before_change();
  if (parent) {
    parent->names().erase(name_, this);
    parent->names().insert(name, this);
  }
  name_ = name;
  on_name_changed();
  notify_property(*this, "name");
  if (Layout::exists()) Layout::get().signal_object_renamed().emit(this);
}

void Object::destroy() {
  if (deleting_) return;
  if (auto* watcher = DocumentWatcher::get()) watcher->before_end(*this);
  ChangeCount::add(Change::structure);
  deleting_ = true;
  on_deleting();
  destroy_children();
  on_deleted();
  // Handlers may end the parent too, so each step looks it up again.
  if (auto* parent = get_parent()) parent->on_child_removing(this);
  signal_deleted_.emit();
  if (auto* parent = get_parent()) parent->signal_child_removed_.emit(this);
  if (Layout::exists()) Layout::get().signal_object_removed().emit(this);
  leave_parent();
  if (auto* watcher = DocumentWatcher::get()) watcher->ended(*this);
  delete this;
}

// A handler may destroy siblings, so each round looks for the first child that is still there; a
// child whose own destruction led here is left to finish by itself. It may end this object as well.
void Object::destroy_children() {
  const AliveGuard alive(*this);
  auto* node = node_.gnode->children;
  while (node) {
    auto* child = of(node);
    if (child->deleting_) {
      node = node->next;
      continue;
    }
    child->destroy();
    if (!alive) return;
    node = node_.gnode->children;
  }
}

void Object::leave_parent() {
  auto* parent = get_parent();
  if (!parent) return;
  if (parent->last_child_ == node_.gnode) parent->last_child_ = node_.gnode->prev;
  parent->names().erase(name_, this);
  g_node_unlink(node_.gnode);
}

Object* Object::get_parent() const {
  return of(node_.gnode->parent);
}

std::vector<Object*> Object::get_ancestors() const {
  std::vector<Object*> ancestors;
  for (auto* object = get_parent(); object; object = object->get_parent()) {
    ancestors.push_back(object);
  }
  return ancestors;
}

Object* Object::child_at(unsigned n) const {
  return of(g_node_nth_child(node_.gnode, n));
}

int Object::get_position() const {
  return node_.gnode->parent ? g_node_child_position(node_.gnode->parent, node_.gnode) : -1;
}

unsigned Object::child_count() const {
  return g_node_n_children(node_.gnode);
}

bool Object::can_contain(Object* /*child*/) const {
  return false;
}

void Object::save(YAML::Emitter& /*out*/) const {
  assert(false && "Unimplemented Save");
}

bool Object::save_part(YAML::Emitter& out, unsigned /*part*/) const {
  save(out);
  return false;
}

void Object::restore(const EntryChange& change) {
  change.read<Glib::ustring>("name", [this](const auto& name) { set_name(name); });
}

Gtk::Widget* Object::make_panel(const Glib::RefPtr<Gtk::SizeGroup>& labels) {
  return make_registered_panel(*this, PanelKind::own, labels);
}

Gtk::Widget* Object::make_properties_panel(const Glib::RefPtr<Gtk::SizeGroup>& labels) {
  return make_registered_panel(*this, PanelKind::properties, labels);
}

Object* Object::create(const YAML::Node& node) {
  const auto* document_class = find_document_class(node.Tag());
  if (!document_class) {
    throw YAML::RepresentationException(
        node.Mark(), Glib::ustring::compose("Unimplemented Load: %1", node.Tag()));
  }
  auto& toplevel = Layout::get().get_toplevel(document_class->section);
  return toplevel.add(document_class->load(node));
}

void Object::load_identity(const YAML::Node& node) {
  if (const auto name = node["name"]) {
    Glib::ustring text;
    name >> text;
    set_name(text);
  }
  if (const auto id = node["id"]) Layout::get().register_id(this, id);
}

void Object::save_identity(YAML::Emitter& out) const {
  out << YAML::Key << "name" << YAML::Value << name_;
  out << YAML::Key << "id" << YAML::Value << Layout::get().get_id(this);
}

}  // namespace zemblar
