#include "ui/windows/object_rows.h"

#include <glibmm/main.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "core/property.h"
#include "core/toplevel.h"
#include "devices/device.h"
#include "scripts/script.h"
#include "ui/toolkit/object_icon.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;
using RealClock = std::chrono::steady_clock;

/// Short enough not to be noticed while typing or dragging.
constexpr auto slice = 4ms;
/// Rank of an object whose name does not contain the text; above all other ranks.
constexpr int misses = 6;
constexpr unsigned running_delay = 200;  // ms

}  // namespace

Glib::RefPtr<ObjectRows> ObjectRows::create() {
  return Glib::RefPtr<ObjectRows>(new ObjectRows);
}

const ObjectRows::Columns& ObjectRows::columns() {
  static const Columns all;
  return all;
}

ObjectRows::ObjectRows() {
  set_column_types(columns());
}

// --- Filling ---

void ObjectRows::fill(Object& root, const Glib::ustring& text, const Object* kept) {
  unfilled_.clear();
  changed_.clear();
  rows_.clear();
  hits_.clear();
  clear();
  root_ = &root;
  text_ = text.casefold().raw();
  if (!text_.empty()) find_hits(root, kept);
  hits_.insert(&root);
  insert(root);
}

bool ObjectRows::has_text(const Object& object) const {
  return object.get_name().casefold().raw().find(text_) != std::string::npos;
}

bool ObjectRows::find_hits(const Object& object, const Object* kept) {
  bool any = &object == kept || has_text(object);
  for (const auto* child : object) {
    if (find_hits(*child, kept)) any = true;
  }
  if (any) hits_.insert(&object);
  return any;
}

Object* ObjectRows::first_hit() const {
  if (text_.empty() || !root_) return nullptr;
  Object* best = nullptr;
  int least = misses;
  find_best(*root_, best, least);
  return best;
}

void ObjectRows::find_best(Object& object, Object*& best, int& least) const {
  const auto rank = rank_of(object);
  if (rank < least) {
    best = &object;
    least = rank;
  }
  for (auto* child : object) {
    if (hits_.contains(child)) find_best(*child, best, least);
  }
}

int ObjectRows::rank_of(const Object& object) const {
  const auto name = object.get_name().casefold().raw();
  const auto place = name.find(text_);
  if (place == std::string::npos) return misses;
  const bool is_kind = dynamic_cast<const Toplevel*>(&object) || &object == root_;
  return (place != 0 ? 2 : name == text_ ? 0 : 1) + (is_kind ? misses / 2 : 0);
}

void ObjectRows::insert(Object& object) {
  set_row(object, insert_row(object));
  if (is_filtered() || object.child_count() <= few) {
    fill_children(object, [] { return false; });
    return;
  }
  unfilled_.push_back(&object);
  if (unfilled_.size() > 1) return;
  filling_ = Glib::signal_idle().connect(sigc::mem_fun(*this, &ObjectRows::fill_slice));
}

// Inserts the row before that of the next sibling that has one, because appending makes the toolkit
// walk all rows to the end.
Gtk::TreeIter ObjectRows::insert_row(Object& object) {
  if (&object == root_) return prepend();
  for (ObjectIter next(object); ++next;) {
    const auto row = rows_.find(*next);
    if (row != rows_.end()) return Gtk::TreeStore::insert(row->second.iter);
  }
  return append(rows_.at(object.get_parent()).iter->children());
}

void ObjectRows::set_row(Object& object, const Gtk::TreeIter& row) {
  (*row)[columns().object] = &object;
  (*row)[columns().icon] = object_icon(object).get_string();
  (*row)[columns().name] = object.get_name();
  auto& service = rows_.insert_or_assign(&object, Row{row}).first->second.service;
  if (auto* device = dynamic_cast<Device*>(&object)) {
    const auto follow = [this, &object] { refresh(object); };
    service[0] = device->property_active().signal_changed().connect(follow);
    service[1] = device->property_track_power().signal_changed().connect(follow);
  } else if (auto* script = dynamic_cast<Script*>(&object)) {
    service[0] = script->signal_runs_changed().connect([this, &object] { refresh_soon(object); });
  }
}

bool ObjectRows::fill_slice() {
  const auto end = RealClock::now() + slice;
  while (!unfilled_.empty()) {
    auto* container = unfilled_.front();
    if (!fill_children(*container, [end] { return RealClock::now() > end; })) return true;
    unfilled_.pop_front();
  }
  return false;
}

// Adds children from the last to the first, which makes insert_row fast.
template <typename IsOver>
bool ObjectRows::fill_children(Object& container, const IsOver& is_over) {
  const auto first = container.begin();
  for (auto child = container.end(); child != first;) {
    --child;
    if (rows_.contains(*child) || !lets_through(**child)) continue;
    insert(**child);
    if (is_over()) return false;
  }
  return true;
}

// --- Following the document ---

bool ObjectRows::add(Object& object) {
  if (rows_.contains(&object)) return false;
  if (!text_.empty() && !hits_.contains(&object)) return has_text(object);
  if (rows_.contains(object.get_parent())) insert(object);
  return false;
}

bool ObjectRows::refresh(const Object& object) {
  if (const auto row = row_of(object)) {
    (*row)[columns().icon] = object_icon(object).get_string();
    (*row)[columns().name] = object.get_name();
  }
  return !text_.empty() && has_text(object) != hits_.contains(&object);
}

// Runs come and go faster than anybody sees.
void ObjectRows::refresh_soon(const Object& object) {
  changed_.insert(&object);
  if (refreshing_.connected()) return;
  refreshing_ = Glib::signal_timeout().connect(
      [this] {
        if (is_editing && is_editing()) return true;
        for (const auto* one : std::exchange(changed_, {})) refresh(*one);
        return false;
      },
      running_delay);
}

void ObjectRows::remove(const Object& object) {
  const auto row = row_of(object);
  forget(object);
  hits_.erase(&object);
  if (!row) return;
  (*row)[columns().object] = nullptr;
  erase(row);
}

void ObjectRows::forget(const Object& object) {
  std::erase(unfilled_, &object);
  changed_.erase(&object);
  if (rows_.erase(&object) == 0) return;
  for (const auto* child : object) forget(*child);
}

void ObjectRows::move(Object& object) {
  if (const auto row = row_of(object)) {
    forget(object);
    erase(row);
  }
  add(object);
}

// --- Finding ---

Gtk::TreeIter ObjectRows::row_of(const Object& object) const {
  const auto found = rows_.find(&object);
  return found == rows_.end() ? Gtk::TreeIter() : found->second.iter;
}

Gtk::TreeIter ObjectRows::make_row_of(Object& object) {
  if (!rows_.contains(&object) && lets_through(object) && object.get_parent()) {
    if (make_row_of(*object.get_parent()) && !rows_.contains(&object)) insert(object);
  }
  return row_of(object);
}

Object* ObjectRows::object_at(const Gtk::TreePath& path) const {
  const auto row = const_cast<ObjectRows*>(this)->get_iter(path);
  return row ? row->get_value(columns().object) : nullptr;
}

// --- Dragging ---

bool ObjectRows::row_draggable_vfunc(const Gtk::TreePath& path) const {
  auto* object = object_at(path);
  return object && object->get_parent() && object->can_move_to(*object->get_parent());
}

ObjectRows::Place ObjectRows::place_of(const Gtk::TreePath& at,
                                       const Gtk::SelectionData& data) const {
  Glib::RefPtr<Gtk::TreeModel> from;
  Gtk::TreePath path;
  auto parent = at;
  if (!Gtk::TreePath::get_from_selection_data(data, from, path) || !parent.up()) return {};
  if (from->gobj() != Gtk::TreeModel::gobj() || parent.empty()) return {};
  return {.object = object_at(path), .parent = object_at(parent), .next = object_at(at)};
}

bool ObjectRows::row_drop_possible_vfunc(const Gtk::TreePath& at,
                                         const Gtk::SelectionData& data) const {
  const auto place = place_of(at, data);
  return place.object && place.parent && may_drop(*place.object, *place.parent);
}

bool ObjectRows::drag_data_received_vfunc(const Gtk::TreePath& at, const Gtk::SelectionData& data) {
  const auto place = place_of(at, data);
  if (!place.object || !place.parent || !may_drop(*place.object, *place.parent)) return false;
  drop(*place.object, *place.parent, place.next);
  return true;
}

// Nothing to delete: the row has moved together with its object.
bool ObjectRows::drag_data_delete_vfunc(const Gtk::TreePath& /*path*/) {
  return false;
}

}  // namespace zemblar
