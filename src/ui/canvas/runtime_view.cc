#include "ui/canvas/runtime_view.h"

#include <atkmm/object.h>
#include <gdk/gdkkeysyms.h>
#include <gdkmm/general.h>
#include <gtk/gtkmain.h>

#include <algorithm>
#include <utility>

#include "core/i18n.h"
#include "ui/canvas/view_switches.h"

namespace zemblar {
namespace {

constexpr double ring_distance = 5;  // pixels
constexpr double ring_width = 3;

/// True if the present press is a repeated one of a double click. The toolkit delivers that press
/// first, followed by a GDK_2BUTTON_PRESS event.
bool is_second_press() {
  GdkEvent* next = gdk_event_peek();
  if (!next) return false;
  const bool repeated = next->type == GDK_2BUTTON_PRESS || next->type == GDK_3BUTTON_PRESS;
  gdk_event_free(next);
  return repeated;
}

/// True if the user presses Tab. The toolkit also moves the focus by itself, when a window opens or
/// a page is shown.
bool is_tab_pressed() {
  GdkEvent* event = gtk_get_current_event();
  if (!event) return false;
  const guint key = event->type == GDK_KEY_PRESS ? event->key.keyval : 0;
  gdk_event_free(event);
  return key == GDK_KEY_Tab || key == GDK_KEY_ISO_Left_Tab || key == GDK_KEY_KP_Tab;
}

}  // namespace

RuntimeView::RuntimeView(View& view)
    : DiagramCanvas(view, _("Nothing has been drawn here yet.\n"
                            "The track editor is in the menu View.")) {
  get_accessible()->set_name(view.get_name());
  renamed_ = view.property_name().signal_changed().connect(
      [this] { get_accessible()->set_name(get_view().get_name()); });
  changed_ = view.signal_changed().connect([this] {
    auto* drawn = get_view().changed_object();
    accessibles_.on_changed(drawn);
    if (marked_ && (!drawn || drawn == marked_)) queue_draw();
  });
  added_ = view.signal_object_added().connect(
      [this](ViewObj* object) { accessibles_.on_added(object); });
  removed_ = view.signal_object_removed().connect([this](ViewObj* object) {
    if (object == marked_) marked_ = nullptr;
    accessibles_.on_removed(object);
  });
}

RuntimeView::~RuntimeView() = default;

Glib::RefPtr<Atk::Object> RuntimeView::on_get_accessible() {
  auto* accessible = accessibles_.get();
  return accessible ? Glib::wrap(accessible, true) : DiagramCanvas::on_get_accessible();
}

void RuntimeView::draw_object(const Context& context, ViewObj& object) {
  object.draw_runtime(context);
}

void RuntimeView::draw_tags(const Context& context, ViewObj& object, SelectionTable& table) {
  object.draw_runtime_tags(context, table);
}

PixelBox RuntimeView::box_of(const Context& context, ViewObj& object) {
  return object.runtime_box(context);
}

bool RuntimeView::on_button_press_event(GdkEventButton* event) {
  if (event->button != 1) return DiagramCanvas::on_button_press_event(event);
  if (event->type != GDK_BUTTON_PRESS || is_second_press()) return true;
  grab_focus();
  mark(nullptr);
  update();
  const bool insists = (event->state & GDK_SHIFT_MASK) != 0;
  if (const auto tag = hit(event->x, event->y)) tag->object->click(*tag, insists);
  return true;
}

// --- By keys ---

void RuntimeView::mark(ViewObj* drawn) {
  auto* former = std::exchange(marked_, drawn);
  if (former == drawn) return;
  if (drawn && get_realized()) bring_into_sight(box_on_canvas(*drawn));
  accessibles_.on_marked(former, drawn);
  queue_draw();
}

// When Tab moves the focus from another widget to the canvas, the first or last switch is marked.
// If the toolkit moves the focus by itself, no switch is marked, so that Space throws nothing.
bool RuntimeView::on_focus(Gtk::DirectionType direction) {
  if (direction != Gtk::DIR_TAB_FORWARD && direction != Gtk::DIR_TAB_BACKWARD) {
    return DiagramCanvas::on_focus(direction);
  }
  const bool enters = !is_focus();
  if (enters) {
    marked_ = nullptr;
    grab_focus();
    if (!is_tab_pressed()) return true;
  }
  return mark_next(direction == Gtk::DIR_TAB_BACKWARD) || enters;
}

// False after the last switch, so that the focus moves to the next widget.
bool RuntimeView::mark_next(bool back) {
  auto all = switches_of(get_view());
  if (back) std::ranges::reverse(all);
  const auto current = std::ranges::find(all, marked_);
  const auto next = current == all.end() ? all.begin() : current + 1;
  mark(next == all.end() ? nullptr : *next);
  return next != all.end();
}

// If the marked switch is not visible, the first press only scrolls it into the visible part.
void RuntimeView::press_marked(bool insists) {
  const auto box = box_on_canvas(*marked_);
  if (!box.meets(visible_box())) return bring_into_sight(box);
  click_next(*marked_, insists);
}

bool RuntimeView::on_key_press_event(GdkEventKey* event) {
  const auto modifiers = event->state & gtk_accelerator_get_default_mod_mask();
  const bool insists = modifiers == GDK_SHIFT_MASK;
  if ((modifiers != 0 && !insists) || !marked_) return DiagramCanvas::on_key_press_event(event);
  switch (event->keyval) {
    case GDK_KEY_Return:
    case GDK_KEY_KP_Enter:
    case GDK_KEY_space:
      press_marked(insists);
      return true;
    case GDK_KEY_Escape:
      mark(nullptr);
      return true;
    default:
      return DiagramCanvas::on_key_press_event(event);
  }
}

bool RuntimeView::on_focus_in_event(GdkEventFocus* event) {
  queue_draw();
  return DiagramCanvas::on_focus_in_event(event);
}

bool RuntimeView::on_focus_out_event(GdkEventFocus* event) {
  queue_draw();
  return DiagramCanvas::on_focus_out_event(event);
}

bool RuntimeView::on_expose_event(GdkEventExpose* event) {
  const bool handled = DiagramCanvas::on_expose_event(event);
  if (marked_ && is_focus()) draw_ring(*event);
  return handled;
}

// Draws the ring over the picture, with a rim so that it is visible on any background.
void RuntimeView::draw_ring(const GdkEventExpose& event) {
  const auto box = box_on_canvas(*marked_);
  const auto context = get_window()->create_cairo_context();
  context->rectangle(event.area.x, event.area.y, event.area.width, event.area.height);
  context->clip();
  context->rectangle(box.left - ring_distance, box.top - ring_distance,
                     box.right - box.left + 2 * ring_distance,
                     box.bottom - box.top + 2 * ring_distance);
  const double paper = 1 - get_view().get_ink();
  context->set_source_rgb(paper, paper, paper);
  context->set_line_width(2 * ring_width);
  context->stroke_preserve();
  Gdk::Cairo::set_source_color(context, get_style()->get_bg(Gtk::STATE_SELECTED));
  context->set_line_width(ring_width);
  context->stroke();
}

}  // namespace zemblar
