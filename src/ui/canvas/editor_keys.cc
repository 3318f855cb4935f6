// What keys do on the canvas of the track editor: whatever the pointer does there.

#include <gdk/gdkkeysyms.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "ui/canvas/editor_view.h"

namespace zemblar {
namespace {

constexpr double fine = 1;  // diagram units
constexpr double ring = 8;  // pixels

struct Arrow {
  guint key;
  guint keypad;
  Vector way;
};
constexpr std::array arrows{
    Arrow{GDK_KEY_Left, GDK_KEY_KP_Left, {-1, 0}}, Arrow{GDK_KEY_Right, GDK_KEY_KP_Right, {1, 0}},
    Arrow{GDK_KEY_Up, GDK_KEY_KP_Up, {0, -1}}, Arrow{GDK_KEY_Down, GDK_KEY_KP_Down, {0, 1}}};

const Arrow* arrow_of(guint key) {
  const auto* found = std::ranges::find_if(
      arrows, [key](const auto& arrow) { return key == arrow.key || key == arrow.keypad; });
  return found == arrows.end() ? nullptr : found;
}

bool is_control(guint key) {
  return key == GDK_KEY_Control_L || key == GDK_KEY_Control_R;
}

/// Of a node or a handle; nothing for a part without a place of its own.
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
  const auto* arrow = plain ? arrow_of(event->keyval) : nullptr;
  if (arrow && (selected_ || placed_)) {
    nudge(arrow->way, shift);
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
    default:
      return DiagramCanvas::on_key_press_event(event);
  }
}

bool EditorView::on_key_release_event(GdkEventKey* event) {
  if (is_control(event->keyval)) aim(pointer_, false);
  if (arrow_of(event->keyval)) nudging_.reset();
  return DiagramCanvas::on_key_release_event(event);
}

bool EditorView::on_focus_out_event(GdkEventFocus* event) {
  nudging_.reset();
  return DiagramCanvas::on_focus_out_event(event);
}

// At the pointer, as after a click.
bool EditorView::show_part_menu() {
  if (const auto part = current_part()) selected_->show_menu(*part, gtk_get_current_event_time());
  return true;
}

// --- What keys act on ---

// In the order in which they are painted: stretches of track, nodes, handles.
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

void EditorView::draw_current_part(const Context& context) {
  const auto part = part_ ? current_part() : Tag{};
  const auto place = part ? place_of(*part) : std::nullopt;
  if (!place) return;
  const auto colour = get_style()->get_bg(Gtk::STATE_SELECTED);
  context->set_source_rgb(colour.get_red_p(), colour.get_green_p(), colour.get_blue_p());
  context->set_line_width(2 / get_zoom());
  context->begin_new_path();
  context->arc(place->x, place->y, ring / get_zoom(), 0, 2 * M_PI);
  context->stroke();
}

// At the end the focus goes on to the next widget.
bool EditorView::select_next(bool back) {
  const auto& objects = get_view().get_objects();
  if (objects.empty()) return false;
  const auto last = objects.size() - 1;
  if (!selected_) {
    select(objects[back ? last : 0].operator->());
    return true;
  }
  const auto place = get_view().place_of(selected_);
  if (place == (back ? 0 : last)) return false;
  select(objects[back ? place - 1 : place + 1].operator->());
  return true;
}

void EditorView::next_part(bool back) {
  if (!selected_) return;
  const auto count = parts_of(*selected_).size();
  if (count == 0) return;
  const auto step = back ? count - 1 : 1;
  part_ = part_ ? (*part_ + step) % count : (back ? count - 1 : 0);
  invalidate();
}

// To the next line of the grid, or by one unit. As long as the key is held it is one step.
void EditorView::nudge(const Vector& way, bool finely) {
  if (!nudging_) nudging_.emplace();
  if (!selected_) return;
  const auto part = current_part();
  if (!part) return;
  const auto from = place_of(*part).value_or(selected_->anchor());
  selected_->drag_start(*part, from);
  selected_->drag_move(*part, finely ? from + way * fine : next_line(from, way));
}

}  // namespace zemblar
