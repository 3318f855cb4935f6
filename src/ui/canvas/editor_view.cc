#include "ui/canvas/editor_view.h"

#include <atkmm/object.h>
#include <gdk/gdkkeysyms.h>
#include <glibmm/main.h>

#include <algorithm>
#include <cmath>

#include "core/i18n.h"
#include "diagram/view_menu.h"
#include "diagram/view_track.h"

namespace zemblar {
namespace {

/// The objects that float together with the dragged one.
constexpr std::size_t most_dependants = 3;
/// The distance in pixels, at any zoom, from the middle of a track up to which a click hits it.
constexpr double track_reach = 6;
constexpr double half_track = 4;  // half the width of its tag, in diagram units

Vector place_of(double x, double y) {
  return {x, y};
}

}  // namespace

EditorView::EditorView(View& view)
    : DiagramCanvas(view, _("This view is empty.\nChoose a tool above, and click here.")) {
  get_accessible()->set_name(view.get_name());
  get_accessible()->set_role(Atk::ROLE_DRAWING_AREA);
  renamed_ = view.property_name().signal_changed().connect(
      [this] { get_accessible()->set_name(get_view().get_name()); });
  add_events(Gdk::KEY_PRESS_MASK | Gdk::KEY_RELEASE_MASK | Gdk::ENTER_NOTIFY_MASK |
             Gdk::LEAVE_NOTIFY_MASK);
  signal_popup_menu().connect(sigc::mem_fun(*this, &EditorView::show_part_menu));
  g_signal_connect(gobj(), "grab-broken-event", G_CALLBACK(&EditorView::on_grab_broken), this);
  object_changed_ = view.signal_changed().connect([this] { check_visibility_soon(); });
  object_removed_ =
      view.signal_object_removed().connect(sigc::mem_fun(*this, &EditorView::on_object_removed));
}

// Ends any action on the removed object.
void EditorView::on_object_removed(ViewObj* object) {
  if (tag_ && tag_->object == object) {
    tag_.reset();
    if (mode_ == Mode::pressed || mode_ == Mode::dragging) mode_ = Mode::idle;
  }
  if (object == placed_) {
    placed_ = nullptr;
    end_placing(false);
  }
  if (object == selected_) select(nullptr);
}

void EditorView::select(ViewObj* object) {
  if (object == selected_) return;
  selected_ = object;
  part_.reset();
  invalidate();
  describe();
  signal_selected_changed_.emit();
}

// --- Drawing ---

void EditorView::draw_object(const Context& context, ViewObj& object) {
  const bool selected = &object == selected_;
  if (selected) {
    const auto colour = get_style()->get_bg(Gtk::STATE_SELECTED);
    context->set_source_rgb(colour.get_red_p(), colour.get_green_p(), colour.get_blue_p());
    object.draw_glow(context);
  }
  object.draw(context, selected);
  if (selected) draw_current_part(context);
}

// During a drag, paints only the tags of ends to which the dragged end can be joined. This includes
// neighbours that float with it, because their free ends do not move.
void EditorView::draw_tags(const Context& context, ViewObj& object, SelectionTable& table) {
  if (mode_ != Mode::dragging) return object.draw_tags(context, &object == selected_, table);
  const auto* end = dragged_end();
  if (end && end->get_object() != &object) object.draw_link_target_tags(context, table, *end);
}

// The whole canvas, because handles may be anywhere.
PixelBox EditorView::box_of(const Context& /*context*/, ViewObj& /*object*/) {
  return {0, 0, static_cast<double>(get_width()), static_cast<double>(get_height())};
}

// --- The pointer ---

bool EditorView::on_button_press_event(GdkEventButton* event) {
  grab_focus();
  if (event->type != GDK_BUTTON_PRESS || mode_ == Mode::placing) return true;
  if (event->button == 2) {
    finish();
    return DiagramCanvas::on_button_press_event(event);
  }
  if (mode_ == Mode::idle && (event->button == 1 || event->button == 3)) press(*event);
  return true;
}

// A node is hit from further away than track, and takes precedence over the track of its own
// object. An object exactly under the pointer takes precedence over others.
EditorView::Tag EditorView::hit_about(const Vector& pointer) {
  update();
  const Tag exact = hit(pointer.x, pointer.y);
  const auto is_node = [](const ViewTag& tag) {
    return dynamic_cast<const ViewNode::Tag*>(&tag) != nullptr;
  };
  if (exact && (is_node(*exact) || !dynamic_cast<ViewTrack*>(exact->object))) return exact;
  const auto beyond = [this](double reach, double painted) {
    return std::max(0, static_cast<int>(std::lround(reach - painted * get_zoom())));
  };
  const auto node = hit_near(pointer, beyond(node_reach, ViewNode::reach), [&](const ViewTag& tag) {
    return is_node(tag) && (!exact || tag.object == exact->object);
  });
  if (node) return node;
  const auto any = [](const ViewTag&) { return true; };
  return exact ? exact : hit_near(pointer, beyond(track_reach, half_track), any);
}

void EditorView::press(const GdkEventButton& event) {
  tag_ = hit_about(place_of(event.x, event.y));
  if (event.button == 3) return;
  last_x_ = event.x;
  last_y_ = event.y;
  mode_ = Mode::pressed;
  select(tag_ ? tag_->object : nullptr);
}

bool EditorView::on_motion_notify_event(GdkEventMotion* event) {
  const auto pointer = place_of(event->x, event->y);
  const bool held = (event->state & GDK_BUTTON1_MASK) != 0;
  switch (mode_) {
    case Mode::pressed:
      if (held && tag_ &&
          drag_check_threshold(static_cast<int>(last_x_), static_cast<int>(last_y_),
                               static_cast<int>(event->x), static_cast<int>(event->y))) {
        start_drag(pointer, event->state);
      }
      return true;
    case Mode::dragging:
      drag_to(pointer, event->state);
      aim(pointer, (event->state & GDK_CONTROL_MASK) != 0);
      return true;
    case Mode::placing:
      place_at(pointer, event->state);
      return true;
    default:
      return DiagramCanvas::on_motion_notify_event(event);
  }
}

void EditorView::start_drag(const Vector& pointer, unsigned state) {
  mode_ = Mode::dragging;
  auto& object = *tag_->object;
  auto moving = object.dependants();
  if (moving.size() > most_dependants) moving.resize(most_dependants);
  moving.push_back(&object);
  const auto from = to_view(place_of(last_x_, last_y_));
  grip_ = from - object.anchor();
  const auto* part = dynamic_cast<const ViewNode::Tag*>(tag_.get());
  if (part) came_from_ = part->node->pos;
  object.drag_start(*tag_, from);
  drag_to(pointer, state);
  set_floating(std::move(moving));
  aim(pointer, (state & GDK_CONTROL_MASK) != 0);
}

bool EditorView::on_button_release_event(GdkEventButton* event) {
  if (event->button == 1) {
    drop(*event);
  } else if (event->button == 3 && mode_ == Mode::placing) {
    end_placing(false);
  } else if (event->button == 3 && mode_ == Mode::idle) {
    const auto tag = std::exchange(tag_, {});
    if (!tag) return true;
    select(tag->object);
    const MenuCall call(to_view(place_of(event->x, event->y)));
    tag->object->show_menu(*tag, event->time);
  } else {
    return DiagramCanvas::on_button_release_event(event);
  }
  return true;
}

void EditorView::drop(const GdkEventButton& event) {
  const auto pointer = place_of(event.x, event.y);
  if (mode_ == Mode::placing) {
    if (holds(pointer)) end_placing(true);
    return;
  }
  const bool dragged = mode_ == Mode::dragging;
  if (dragged && (event.state & GDK_CONTROL_MASK) != 0) join_at(pointer);
  tag_.reset();
  if (mode_ == Mode::pressed || mode_ == Mode::dragging) mode_ = Mode::idle;
  if (!dragged) return;
  set_floating({});
  describe();
}

// --- Placing what is new ---

void EditorView::place(ViewObj* object, const std::function<void()>& cancelled) {
  if (mode_ == Mode::placing) end_placing(false);
  get_view().add_object(object);
  placed_ = object;
  placing_.emplace();
  cancelled_ = cancelled;
  mode_ = Mode::placing;
  select(object);
  set_floating({object});
  grab_focus();
  grab_soon_ = Glib::signal_idle().connect([this] { return grab_pointer(), false; });
}

// Called only after the click on a tool has been handled: otherwise the tool button would not learn
// that the pointer has left it, and would stay highlighted. Does not grab while the pointer is
// outside the canvas, where other widgets, such as a stop button, must get the clicks.
void EditorView::grab_pointer() {
  if (mode_ != Mode::placing || !get_mapped()) return;
  int x = 0;
  int y = 0;
  get_pointer(x, y);
  if (!holds(place_of(x, y))) return;
  get_window()->pointer_grab(true,
                             Gdk::POINTER_MOTION_MASK | Gdk::BUTTON_PRESS_MASK |
                                 Gdk::BUTTON_RELEASE_MASK | Gdk::ENTER_NOTIFY_MASK |
                                 Gdk::LEAVE_NOTIFY_MASK,
                             GDK_CURRENT_TIME);
}

bool EditorView::holds(const Vector& place) const {
  const auto seen = visible_box();
  return place.x >= seen.left && place.y >= seen.top && place.x < seen.right &&
         place.y < seen.bottom;
}

bool EditorView::on_enter_notify_event(GdkEventCrossing* event) {
  if (event->mode == GDK_CROSSING_NORMAL && mode_ == Mode::placing) {
    if (!placing_) placing_.emplace();
    grab_pointer();
  }
  return DiagramCanvas::on_enter_notify_event(event);
}

bool EditorView::on_leave_notify_event(GdkEventCrossing* event) {
  if (event->mode == GDK_CROSSING_NORMAL && mode_ == Mode::placing)
    get_window()->pointer_ungrab(GDK_CURRENT_TIME);
  return DiagramCanvas::on_leave_notify_event(event);
}

void EditorView::end_placing(bool placed) {
  auto* object = std::exchange(placed_, nullptr);
  const auto cancelled = std::exchange(cancelled_, {});
  mode_ = Mode::idle;
  get_window()->pointer_ungrab(GDK_CURRENT_TIME);
  set_floating({});
  if (placed) {
    signal_placed_.emit();
  } else {
    if (object) object->remove();
    if (cancelled) cancelled();
  }
  placing_.reset();
}

void EditorView::finish() {
  if (mode_ == Mode::placing) return end_placing(false);
  tag_.reset();
  if (mode_ == Mode::pressed || mode_ == Mode::dragging) mode_ = Mode::idle;
  set_floating({});
}

// When another page is shown or the window is hidden, the user could not end the action any more.
void EditorView::on_unmap() {
  finish();
  DiagramCanvas::on_unmap();
}

gboolean EditorView::on_grab_broken(GtkWidget* /*widget*/, GdkEventGrabBroken* /*event*/,
                                    EditorView* view) {
  if (view->mode_ == Mode::placing) view->finish();
  return FALSE;
}

}  // namespace zemblar
