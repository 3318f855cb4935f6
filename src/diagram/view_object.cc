#include "diagram/view_object.h"

#include <yaml-cpp/yaml.h>

#include <utility>

#include "diagram/diagram_watcher.h"
#include "diagram/view.h"

namespace zemblar {

ViewObj::~ViewObj() = default;

void ViewObj::set_view(View* view) {
  if (view == view_) return;
  if (view_) view_->signal_object_removed().emit(this);
  view_ = view;
  if (view_) view_->signal_object_added().emit(this);
}

void ViewObj::save(YAML::Emitter& out) const {
  out << YAML::LocalTag("view-object");
}

void ViewObj::draw_glow(const Context& context) {
  const auto box = runtime_box(context);
  context->save();
  context->set_identity_matrix();
  context->rectangle(box.left, box.top, box.right - box.left, box.bottom - box.top);
  context->fill();
  context->restore();
}

void ViewObj::draw_tags(const Context& context, bool selected, SelectionTable& table) {
  draw_body_tags(context, selected, table);
  draw_link_tags(context, selected, table);
  draw_handle_tags(context, selected, table);
}

// The slot runs while the object shown is ending, and may release the last reference to this one.
void ViewObj::follow_end(zemblar::Object& object) {
  shown_deleted_ = object.signal_deleted().connect([this] {
    reference();
    const Glib::RefPtr<ViewObj> self(this);
    shown_deleted_.disconnect();
    remove();
  });
}

void ViewObj::drag_start(const ViewTag& /*tag*/, const Vector& position) {
  dragged_from_ = position;
}

void ViewObj::drag_move(const ViewTag& /*tag*/, const Vector& position) {
  before_change();
  move_by(position - std::exchange(dragged_from_, position));
  changed();
}

void ViewObj::drag_right(const Vector& position) {
  before_change();
  move_by(position - get_place());
  changed();
}

void ViewObj::align(double step) {
  before_change();
  move_by(on_grid(anchor(), step) - anchor());
  changed();
}

void ViewObj::move_to_top() {
  if (view_) view_->move_to_top(this);
}

void ViewObj::move_to_bottom() {
  if (view_) view_->move_to_bottom(this);
}

void ViewObj::remove() {
  if (view_) view_->remove_object(this);
}

void ViewObj::before_change() {
  auto* watcher = DiagramWatcher::get();
  if (view_ && watcher) watcher->before_change(*this);
}

void ViewObj::changed() {
  if (view_) view_->object_changed(this);
}

}  // namespace zemblar
