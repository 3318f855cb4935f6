#include "ui/canvas/switch_accessible.h"

#include <gtk/gtk.h>
#include <gtkmm/container.h>

#include <algorithm>
#include <utility>

#include "core/i18n.h"
#include "track/point_base.h"
#include "ui/canvas/runtime_view.h"
#include "ui/canvas/view_switches.h"

namespace zemblar {
namespace {

// --- One switch ---

/// The GObject instance of a child.
struct SwitchObject {
  AtkObject parent;
  SwitchAccessibles* all;  // null after the end of the switch
  ViewObj* drawn;
};

SwitchObject& switch_of(gpointer accessible) {
  return *static_cast<SwitchObject*>(accessible);
}

AtkStateSet* states_of_switch(AtkObject* accessible) {
  auto* states = atk_state_set_new();
  auto& self = switch_of(accessible);
  if (!self.all) {
    atk_state_set_add_state(states, ATK_STATE_DEFUNCT);
    return states;
  }
  auto& canvas = self.all->canvas();
  for (const auto state : {ATK_STATE_ENABLED, ATK_STATE_SENSITIVE, ATK_STATE_FOCUSABLE}) {
    atk_state_set_add_state(states, state);
  }
  if (canvas.get_visible()) atk_state_set_add_state(states, ATK_STATE_VISIBLE);
  if (canvas.get_mapped()) atk_state_set_add_state(states, ATK_STATE_SHOWING);
  if (canvas.has_focus() && canvas.get_marked() == self.drawn) {
    atk_state_set_add_state(states, ATK_STATE_FOCUSED);
  }
  return states;
}

gint place_of_switch(AtkObject* accessible) {
  auto& self = switch_of(accessible);
  if (!self.all) return -1;
  const auto& all = self.all->switches();
  const auto found = std::ranges::find(all, self.drawn);
  return found == all.end() ? -1 : static_cast<gint>(found - all.begin());
}

gboolean click_switch(AtkAction* accessible, gint action) {
  auto& self = switch_of(accessible);
  if (!self.all || action != 0) return FALSE;
  click_next(*self.drawn, false);
  return TRUE;
}

void add_action(gpointer table, gpointer /*unused*/) {
  auto& action = *static_cast<AtkActionIface*>(table);
  action.get_n_actions = [](AtkAction*) { return 1; };
  action.get_name = [](AtkAction*, gint) { return "click"; };
  action.do_action = click_switch;
}

void extents_of_switch(AtkComponent* accessible, gint* x, gint* y, gint* width, gint* height,
                       AtkCoordType relative_to) {
  *x = *y = *width = *height = 0;
  auto& self = switch_of(accessible);
  if (!self.all || !self.all->canvas().get_realized()) return;
  auto& canvas = self.all->canvas();
  const auto box = canvas.box_on_canvas(*self.drawn).whole();
  auto window = canvas.get_window();
  if (relative_to == ATK_XY_SCREEN) {
    window->get_origin(*x, *y);
  } else {
    canvas.translate_coordinates(*canvas.get_toplevel(), 0, 0, *x, *y);
  }
  *x += static_cast<gint>(box.left);
  *y += static_cast<gint>(box.top);
  *width = static_cast<gint>(box.right - box.left);
  *height = static_cast<gint>(box.bottom - box.top);
}

gboolean focus_switch(AtkComponent* accessible) {
  auto& self = switch_of(accessible);
  if (!self.all) return FALSE;
  self.all->canvas().grab_focus();
  self.all->canvas().mark(self.drawn);
  return TRUE;
}

void add_component(gpointer table, gpointer /*unused*/) {
  auto& component = *static_cast<AtkComponentIface*>(table);
  component.get_extents = extents_of_switch;
  component.grab_focus = focus_switch;
}

GType switch_type() {
  static const GType type = [] {
    GTypeInfo info{};
    info.class_size = sizeof(AtkObjectClass);
    info.instance_size = sizeof(SwitchObject);
    info.class_init = [](gpointer table, gpointer) {
      auto& object = *static_cast<AtkObjectClass*>(table);
      object.ref_state_set = states_of_switch;
      object.get_index_in_parent = place_of_switch;
    };
    const auto made =
        g_type_register_static(ATK_TYPE_OBJECT, "ZemblarSwitchAccessible", &info, GTypeFlags{});
    const GInterfaceInfo action{add_action, nullptr, nullptr};
    const GInterfaceInfo component{add_component, nullptr, nullptr};
    g_type_add_interface_static(made, ATK_TYPE_ACTION, &action);
    g_type_add_interface_static(made, ATK_TYPE_COMPONENT, &component);
    return made;
  }();
  return type;
}

// --- The canvas ---

SwitchAccessibles* children_of(AtkObject* canvas) {
  static const auto key = g_quark_from_static_string("zemblar-switches");
  return static_cast<SwitchAccessibles*>(g_object_get_qdata(G_OBJECT(canvas), key));
}

void set_children(AtkObject* canvas, SwitchAccessibles* all) {
  g_object_set_qdata(G_OBJECT(canvas), g_quark_from_static_string("zemblar-switches"), all);
}

gint count_children(AtkObject* canvas) {
  auto* all = children_of(canvas);
  return all ? static_cast<gint>(all->switches().size()) : 0;
}

AtkObject* ref_child(AtkObject* canvas, gint index) {
  auto* all = children_of(canvas);
  if (!all || index < 0 || static_cast<std::size_t>(index) >= all->switches().size()) {
    return nullptr;
  }
  auto* child = all->child_of(all->switches()[static_cast<std::size_t>(index)]);
  return ATK_OBJECT(g_object_ref(child));
}

/// A type derived from the toolkit's accessible class for a drawing area; 0 if there is none.
GType canvas_type() {
  static const GType type = []() -> GType {
    auto* factory = atk_registry_get_factory(atk_get_default_registry(), GTK_TYPE_DRAWING_AREA);
    const auto parent = atk_object_factory_get_accessible_type(factory);
    if (!g_type_is_a(parent, GTK_TYPE_ACCESSIBLE)) return 0;
    GTypeQuery query{};
    g_type_query(parent, &query);
    GTypeInfo info{};
    info.class_size = static_cast<guint16>(query.class_size);
    info.instance_size = static_cast<guint16>(query.instance_size);
    info.class_init = [](gpointer table, gpointer) {
      auto& object = *static_cast<AtkObjectClass*>(table);
      object.get_n_children = count_children;
      object.ref_child = ref_child;
    };
    return g_type_register_static(parent, "ZemblarCanvasAccessible", &info, GTypeFlags{});
  }();
  return type;
}

}  // namespace

SwitchAccessibles::~SwitchAccessibles() {
  if (accessible_) set_children(accessible_, nullptr);
  auto ended = std::move(children_);
  for (auto& [drawn, child] : ended) drop(child);
  if (accessible_) g_object_unref(accessible_);
}

void SwitchAccessibles::drop(Child& child) {
  switch_of(child.accessible).all = nullptr;
  atk_object_notify_state_change(child.accessible, ATK_STATE_DEFUNCT, TRUE);
  g_object_unref(child.accessible);
}

// The widget holds a reference too, because the toolkit notifies the accessible when the widget is
// destroyed, which is after this object.
AtkObject* SwitchAccessibles::get() {
  if (!accessible_ && canvas_type() != 0) {
    accessible_ = ATK_OBJECT(g_object_new(canvas_type(), nullptr));
    atk_object_initialize(accessible_, canvas_.gobj());
    atk_object_set_role(accessible_, ATK_ROLE_DRAWING_AREA);
    set_children(accessible_, this);
    g_object_set_data_full(G_OBJECT(canvas_.gobj()), "zemblar-accessible",
                           g_object_ref(accessible_), g_object_unref);
  }
  return accessible_;
}

const std::vector<ViewObj*>& SwitchAccessibles::switches() {
  if (!std::exchange(switches_known_, true)) switches_ = switches_of(canvas_.get_view());
  return switches_;
}

AtkObject* SwitchAccessibles::child_of(ViewObj* drawn) {
  const auto& all = switches();
  if (std::ranges::find(all, drawn) == all.end()) return nullptr;
  auto& child = children_[drawn];
  if (child.accessible) return child.accessible;
  child.accessible = ATK_OBJECT(g_object_new(switch_type(), nullptr));
  switch_of(child.accessible).all = this;
  switch_of(child.accessible).drawn = drawn;
  atk_object_set_role(child.accessible, ATK_ROLE_PUSH_BUTTON);
  atk_object_set_parent(child.accessible, get());
  atk_object_set_name(child.accessible, describe_switch(*drawn).c_str());
  child.renamed = drawn->get_object()->property_name().signal_changed().connect(
      [this, drawn] { refresh_name(*drawn); });
  return child.accessible;
}

void SwitchAccessibles::refresh_name(ViewObj& drawn) {
  const auto child = children_.find(&drawn);
  if (child == children_.end()) return;
  atk_object_set_name(child->second.accessible, describe_switch(drawn).c_str());
}

// A changed switch may have been moved. Other objects are ignored, because track changes with each
// train.
void SwitchAccessibles::on_changed(ViewObj* drawn) {
  if (drawn && !dynamic_cast<PointBase*>(drawn->get_object())) return;
  switches_known_ = false;
  if (drawn) refresh_name(*drawn);
}

void SwitchAccessibles::on_added(ViewObj* drawn) {
  switches_known_ = false;
  if (children_.empty()) return;
  if (auto* child = child_of(drawn)) {
    g_signal_emit_by_name(accessible_, "children-changed::add", place_of_switch(child), child);
  }
}

void SwitchAccessibles::on_removed(ViewObj* drawn) {
  switches_known_ = false;
  const auto child = children_.find(drawn);
  if (child == children_.end()) return;
  auto ended = std::move(child->second);
  children_.erase(child);
  const auto place = std::ranges::find(switches_, drawn) - switches_.begin();
  g_signal_emit_by_name(accessible_, "children-changed::remove", static_cast<guint>(place),
                        ended.accessible);
  drop(ended);
}

void SwitchAccessibles::on_marked(ViewObj* former, ViewObj* drawn) {
  if (!accessible_) return;
  for (auto* one : {former, drawn}) {
    auto* child = one ? child_of(one) : nullptr;
    if (child) atk_object_notify_state_change(child, ATK_STATE_FOCUSED, one == drawn);
  }
  auto* child = drawn ? child_of(drawn) : nullptr;
  if (child) g_signal_emit_by_name(accessible_, "active-descendant-changed", child);
}

}  // namespace zemblar
