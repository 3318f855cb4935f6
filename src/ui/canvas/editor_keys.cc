// Keyboard control of the track editor's canvas: everything that the pointer can do.

#include <gdk/gdkkeysyms.h>
#include <gtkmm/window.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "diagram/view_menu.h"
#include "diagram/view_track.h"
#include "ui/canvas/arrow_keys.h"
#include "ui/canvas/editor_view.h"

namespace zemblar {
namespace {

constexpr double fine = 1;  // diagram units
constexpr double ring = 8;  // pixels

bool is_control(guint key) {
  return key == GDK_KEY_Control_L || key == GDK_KEY_Control_R;
}

/// The place of a node or a handle; no value for any other part.
std::optional<Vector> place_of(const ViewTag& tag) {
  const auto* part = dynamic_cast<const ViewNode::Tag*>(&tag);
  if (!part) return {};
  if (part->part == ViewNode::body) return part->node->pos;
  return part->part == ViewNode::left_handle ? part->node->left_point() : part->node->right_point();
}

}  // namespace

bool EditorView::on_key_press_event(GdkEventKey* event) {
  if (is_control(event->keyval)) aim(pointer_, true);
  const bool shift = (event->state & GDK_SHIFT_MASK) != 0;
  const auto modifiers = event->state & gtk_accelerator_get_default_mod_mask();
  const bool plain = (modifiers & ~GDK_SHIFT_MASK) == 0;
  const auto way = plain ? arrow_way(event->keyval) : std::nullopt;
  if (way && (selected_ || placed_)) {
    nudge(*way, shift);
    return true;
  }
  if (mode_ == Mode::placing) {
    const bool places = event->keyval == GDK_KEY_Return || event->keyval == GDK_KEY_KP_Enter;
    if (!places && event->keyval != GDK_KEY_Escape) return true;
    end_placing(places);
    return true;
  }
  if (!plain || mode_ != Mode::idle) return DiagramCanvas::on_key_press_event(event);
  switch (event->keyval) {
    case GDK_KEY_Tab:
    case GDK_KEY_ISO_Left_Tab:
      return select_next(shift) || DiagramCanvas::on_key_press_event(event);
    case GDK_KEY_space:
      next_part(shift);
      return true;
    case GDK_KEY_j:
      join_nearest();
      return true;
    case GDK_KEY_Delete:
      if (selected_) selected_->remove();
      return true;
    case GDK_KEY_Escape:
      if (!part_) return DiagramCanvas::on_key_press_event(event);
      choose_part({});
      return true;
    default:
      return DiagramCanvas::on_key_press_event(event);
  }
}

bool EditorView::on_key_release_event(GdkEventKey* event) {
  if (is_control(event->keyval)) aim(pointer_, false);
  if (arrow_way(event->keyval)) nudging_.reset();
  return DiagramCanvas::on_key_release_event(event);
}

bool EditorView::on_focus_out_event(GdkEventFocus* event) {
  nudging_.reset();
  // Later changes in a field of the window are separate steps.
  const auto* window = dynamic_cast<Gtk::Window*>(get_toplevel());
  if (window && window->get_focus() != this) placing_.reset();
  return DiagramCanvas::on_focus_out_event(event);
}

// Opens the menu beside the current part.
bool EditorView::show_part_menu() {
  const auto part = mode_ == Mode::idle ? current_part() : Tag{};
  if (!part) return true;
  bring_part_into_sight(*part);
  update();
  const auto place = to_canvas(place_of(*part).value_or(selected_->anchor()));
  int left = 0;
  int top = 0;
  get_window()->get_origin(left, top);
  const MenuCall call(left + static_cast<int>(place.x), top + static_cast<int>(place.y));
  selected_->show_menu(*part, gtk_get_current_event_time());
  return true;
}

// --- What keys act on ---

// The parts in the order of painting: segments of track, nodes, handles.
SelectionTable EditorView::parts_of(ViewObj& object) {
  const auto nowhere = Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, 1, 1);
  SelectionTable parts;
  object.draw_tags(Cairo::Context::create(nowhere), true, parts);
  return parts;
}

EditorView::Tag EditorView::current_part() {
  if (!selected_) return {};
  const auto parts = parts_of(*selected_);
  if (parts.empty()) return {};
  return parts.at(std::min(part_.value_or(0), parts.size() - 1));
}

// A node or a handle gets a ring, a segment gets the selection colour.
void EditorView::draw_current_part(const Context& context) {
  const auto part = part_ ? current_part() : Tag{};
  if (!part) return;
  const auto colour = get_style()->get_bg(Gtk::STATE_SELECTED);
  context->set_source_rgb(colour.get_red_p(), colour.get_green_p(), colour.get_blue_p());
  auto* track = dynamic_cast<ViewTrack*>(selected_);
  if (track) track->stroke_stretches(context, *part);
  const auto place = place_of(*part);
  if (!place) return;
  context->set_line_width(2 / get_zoom());
  context->begin_new_path();
  context->arc(place->x, place->y, ring / get_zoom(), 0, 2 * M_PI);
  context->stroke();
}

// False after the last object, so that the focus moves to the next widget.
bool EditorView::select_next(bool back) {
  const auto& objects = get_view().get_objects();
  if (objects.empty()) return false;
  const auto last = objects.size() - 1;
  std::size_t next = back ? last : 0;
  if (selected_) {
    const auto place = get_view().place_of(selected_);
    if (place == (back ? 0 : last)) return false;
    next = back ? place - 1 : place + 1;
  }
  select(objects[next].operator->());
  bring_into_sight(box_on_canvas(*selected_));
  return true;
}

// The whole object follows the last part.
void EditorView::next_part(bool back) {
  if (!selected_) return;
  const auto count = parts_of(*selected_).size();
  const auto whole = count;
  const auto from = std::min(part_.value_or(whole), whole);
  const auto next = (from + (back ? count : 1)) % (count + 1);
  choose_part(next == whole ? std::nullopt : std::optional(next));
}

// Shows the surroundings of a node or handle; for a segment, the whole object.
void EditorView::bring_part_into_sight(const ViewTag& part) {
  const auto place = place_of(part);
  if (!place) return bring_into_sight(box_on_canvas(*selected_));
  update();
  const auto at = to_canvas(*place);
  bring_into_sight({at.x - ring, at.y - ring, at.x + ring, at.y + ring});
}

void EditorView::choose_part(std::optional<std::size_t> part) {
  part_ = part;
  invalidate();
  if (const auto chosen = part ? current_part() : Tag{}) bring_part_into_sight(*chosen);
  describe();
}

// Moves the current part to the next grid line, or by one unit if `finely`. All moves while the key
// is held are one undo step.
void EditorView::nudge(const Vector& way, bool finely) {
  if (!nudging_) nudging_.emplace();
  if (!selected_) return;
  const auto part = current_part();
  if (!part) return;
  const auto from = place_of(*part).value_or(selected_->anchor());
  selected_->drag_start(*part, from);
  selected_->drag_move(*part, finely ? from + way * fine : next_line(from, way));
  bring_part_into_sight(*part);
  describe();
}

}  // namespace zemblar
