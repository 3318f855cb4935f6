#include "ui/canvas/diagram_canvas.h"

#include <gdkmm/general.h>
#include <glibmm/main.h>
#include <gtkmm/adjustment.h>

#include <algorithm>
#include <cmath>

#include "ui/canvas/arrow_keys.h"

namespace zemblar {
namespace {

constexpr double zoom_step = 1.1;
constexpr double least_zoom = 0.02;
/// Above a zoom of about forty, letters are too large for the font library, which then fails
/// permanently.
constexpr double most_zoom = 16;
constexpr double part_of_canvas = 0.96;  // leaves a margin
constexpr double sight_margin = 16;      // pixels
constexpr double key_step = 40;          // pixels
/// In pixels; limit of the window system.
constexpr int largest_pixmap = 32767;
/// Distance of a rail from the edge of its box, in pixels at zoom 1.
constexpr double slack = 12;
/// With more parts than this everything is redrawn.
constexpr std::size_t most_parts = 64;

}  // namespace

DiagramCanvas::DiagramCanvas(View& view, const Glib::ustring& hint) : view_(view), hint_(hint) {
  set_can_focus();
  // The canvas has its own pixmap.
  set_double_buffered(false);
  add_events(Gdk::BUTTON_PRESS_MASK | Gdk::BUTTON_RELEASE_MASK | Gdk::POINTER_MOTION_MASK |
             Gdk::SCROLL_MASK);
  view_changed_ = view.signal_changed().connect([this] { on_view_changed(); });
  object_added_ = view.signal_object_added().connect([this](ViewObj*) { invalidate(); });
  colour_changed_ = view.property_colour().signal_changed().connect([this] { follow_colour(); });
  image_changed_ = view.signal_image_changed().connect([this] { queue_resize(); });
  signal_grab_broken_event().connect([this](GdkEventGrabBroken*) {
    mode_ = Mode::idle;
    return false;
  });
  follow_colour();
}

void DiagramCanvas::follow_colour() {
  modify_bg(Gtk::STATE_NORMAL, view_.get_colour());
  invalidate();
}

void DiagramCanvas::on_size_request(Gtk::Requisition* requisition) {
  requisition->width = view_.image().width();
  requisition->height = view_.image().height();
}

// --- What has to be drawn ---

void DiagramCanvas::invalidate() {
  dirty_ = true;
  stale_.clear();
  queue_draw();
}

void DiagramCanvas::on_view_changed() {
  if (auto* object = view_.changed_object()) {
    on_object_changed(*object);
  } else {
    invalidate();
  }
}

// Redraws both the former and the new area of the object.
void DiagramCanvas::on_object_changed(ViewObj& object) {
  if (dirty_) return;
  if (floats(object)) return queue_draw();
  const auto context = image_->measure();
  context->set_matrix(matrix_);
  auto& box = boxes_[&object];
  const auto former = std::exchange(box, box_of(context, object));
  if (!(former == box)) check_visibility_soon();
  const auto part = former.united(box).intersected({0, 0, size().x, size().y}).whole();
  if (part.empty()) return;
  if (stale_.empty() || !(stale_.back() == part)) stale_.push_back(part);
  if (stale_.size() > most_parts) return invalidate();
  queue_draw_area(static_cast<int>(part.left), static_cast<int>(part.top),
                  static_cast<int>(part.right - part.left),
                  static_cast<int>(part.bottom - part.top));
}

bool DiagramCanvas::is_current() const {
  return !dirty_ && image_ && image_->has_size(shown_width(), shown_height());
}

int DiagramCanvas::shown_width() const {
  return std::clamp(get_width(), 1, largest_pixmap);
}

int DiagramCanvas::shown_height() const {
  return std::clamp(get_height(), 1, largest_pixmap);
}

void DiagramCanvas::update() {
  if (!is_current()) {
    repaint(shown_width(), shown_height());
  } else if (!stale_.empty()) {
    repaint_parts();
  }
}

// While a cairo context of the window exists, the toolkit does not make a buffer for each expose,
// which the window system would clear needlessly. So `direct_` is kept.
bool DiagramCanvas::on_expose_event(GdkEventExpose* event) {
  if (fit_waits_) show_whole();
  update();
  if (!direct_) direct_ = get_window()->create_cairo_context();
  const auto& area = event->area;
  get_window()->draw_drawable(get_style()->get_black_gc(), pixmap(), area.x, area.y, area.x, area.y,
                              area.width, area.height);
  if (!floating_.empty()) draw_floating(*event);
  const auto former = std::exchange(seen_, visible_box());
  if (!(seen_ == former)) check_visibility_soon();
  return true;
}

void DiagramCanvas::on_map() {
  Gtk::DrawingArea::on_map();
  check_visibility_soon();
}

void DiagramCanvas::on_size_allocate(Gtk::Allocation& allocation) {
  direct_.clear();
  Gtk::DrawingArea::on_size_allocate(allocation);
}

void DiagramCanvas::on_unrealize() {
  direct_.clear();
  Gtk::DrawingArea::on_unrealize();
}

// --- What is being moved ---

void DiagramCanvas::set_floating(std::vector<ViewObj*> objects) {
  floating_ = std::move(objects);
  floating_removed_ = view_.signal_object_removed().connect(
      [this](ViewObj* object) { std::erase(floating_, object); });
  invalidate();
}

bool DiagramCanvas::floats(const ViewObj& object) const {
  return std::ranges::find(floating_, &object) != floating_.end();
}

void DiagramCanvas::draw_floating(const GdkEventExpose& event) {
  const auto context = get_window()->create_cairo_context();
  context->rectangle(event.area.x, event.area.y, event.area.width, event.area.height);
  context->clip();
  context->set_matrix(matrix_);
  for (auto* object : floating_) draw_object(context, *object);
  draw_over(context);
}

// --- Painting ---

void DiagramCanvas::repaint(int width, int height) {
  ++repaints_.whole;
  place_view();
  if (!image_ || !image_->has_size(width, height)) image_.emplace(get_window(), width, height);
  if (boxes_.size() != view_.get_objects().size()) boxes_.clear();
  stale_.clear();
  const auto context = image_->context();
  paint_background(context);
  for (const auto& object : view_.get_objects()) {
    auto& shown = *object.operator->();
    boxes_[&shown] = box_of(context, shown);
    if (!floats(shown)) draw_object(context, shown);
  }
  paint_hint(context);
  image_->show({{0, 0, static_cast<double>(width), static_cast<double>(height)}});
  tags_wait_ = true;
  stale_tags_.clear();
  update_tags_soon();
  dirty_ = false;
  check_visibility_soon();
}

void DiagramCanvas::paint_background(const Context& context) {
  Gdk::Cairo::set_source_color(context, view_.get_colour());
  context->set_matrix(matrix_);
  context->paint();
  if (const auto& picture = view_.image().pixbuf()) {
    Gdk::Cairo::set_source_pixbuf(context, picture, 0, 0);
    context->paint();
  }
}

// Redraws everything that overlaps the parts, so that each pixel is the same as after a full
// repaint. The objects are not clipped, because clipping changes the antialiasing of edges. So the
// image has wrong pixels around the parts, which are not shown.
void DiagramCanvas::repaint_parts() {
  ++repaints_.parts;
  const auto parts = std::exchange(stale_, {});
  const auto context = image_->context();
  clip_to(context, parts);
  paint_background(context);
  context->reset_clip();
  for (const auto& object : view_.get_objects()) {
    auto& shown = *object.operator->();
    const auto& box = boxes_[&shown];
    const auto met = [&box](const PixelBox& part) { return part.meets(box); };
    if (!floats(shown) && std::ranges::any_of(parts, met)) draw_object(context, shown);
  }
  image_->show(parts);
  const bool whole = tags_wait_ && stale_tags_.empty();
  tags_wait_ = true;
  if (!whole) stale_tags_.insert(stale_tags_.end(), parts.begin(), parts.end());
  if (stale_tags_.size() > most_parts) stale_tags_.clear();
  update_tags_soon();
}

void DiagramCanvas::paint_hint(const Context& context) {
  if (!view_.get_objects().empty() || hint_.empty()) return;
  const auto text = create_pango_layout(hint_);
  text->set_alignment(Pango::ALIGN_CENTER);
  int width = 0;
  int height = 0;
  text->get_pixel_size(width, height);
  context->set_identity_matrix();
  const double ink = view_.get_ink();
  context->set_source_rgba(ink, ink, ink, 0.6);
  context->move_to(std::round((get_width() - width) * 0.5),
                   std::round((get_height() - height) * 0.5));
  text->show_in_cairo_context(context);
}

// --- Tags ---

void DiagramCanvas::update_tags_soon() {
  if (tags_soon_.connected()) return;
  tags_soon_ = Glib::signal_idle().connect(
      [this] {
        if (tags_wait_) update_tags();
        return false;
      },
      Glib::PRIORITY_LOW);
}

void DiagramCanvas::update_tags() {
  tags_wait_ = false;
  const auto parts = std::exchange(stale_tags_, {});
  if (parts.empty()) return paint_tags();
  for (const auto& part : parts) paint_tags_in(part);
}

void DiagramCanvas::paint_tags() {
  tags_.begin(shown_width(), shown_height(), matrix_);
  for (const auto& object : view_.get_objects()) {
    draw_tags(tags_.context(), *object.operator->(), tags_.table());
  }
  whole_table_ = tags_.table().size();
}

// Adds new tag numbers. When there are too many, all tags are painted anew.
void DiagramCanvas::paint_tags_in(const PixelBox& part) {
  const auto& context = tags_.context();
  context->save();
  context->set_identity_matrix();
  clip_to(context, {part});
  context->set_source_rgb(0, 0, 0);
  context->paint();
  context->set_matrix(matrix_);
  for (const auto& object : view_.get_objects()) {
    auto& shown = *object.operator->();
    if (part.meets(boxes_[&shown])) draw_tags(context, shown, tags_.table());
  }
  context->restore();
  constexpr std::size_t slack = 4096;
  if (tags_.table().size() > 2 * whole_table_ + slack) paint_tags();
}

// --- Where the view lies ---

Vector DiagramCanvas::size() const {
  return {static_cast<double>(get_width()), static_cast<double>(get_height())};
}

// Centres the picture; without one, the origin of the view.
void DiagramCanvas::place_view() {
  const Vector picture{static_cast<double>(view_.image().width()),
                       static_cast<double>(view_.image().height())};
  const auto offset = (size() - picture * zoom_) * 0.5 + pan_;
  matrix_ = Cairo::Matrix(zoom_, 0, 0, zoom_, offset.x, offset.y);
}

Vector DiagramCanvas::to_canvas(const Vector& place) const {
  auto point = place;
  matrix_.transform_point(point.x, point.y);
  return point;
}

Vector DiagramCanvas::to_view(const Vector& place) const {
  auto inverse = matrix_;
  inverse.invert();
  auto point = place;
  inverse.transform_point(point.x, point.y);
  return point;
}

PixelBox DiagramCanvas::box_on_canvas(ViewObj& object) {
  update();
  const auto context = image_->measure();
  context->set_matrix(matrix_);
  return object.runtime_box(context);
}

void DiagramCanvas::bring_into_sight(const PixelBox& box) {
  const auto seen = visible_box();
  const auto way = [](double from, double to, double seen_from, double seen_to) {
    const double before = seen_from + sight_margin - from;
    const double beyond = to + sight_margin - seen_to;
    if (before > 0 && beyond > 0) return 0.0;  // the box exceeds the visible part on both sides
    if (before > 0) return before;
    return beyond > 0 ? std::max(-beyond, before) : 0;
  };
  const Vector delta{way(box.left, box.right, seen.left, seen.right),
                     way(box.top, box.bottom, seen.top, seen.bottom)};
  if (delta.length() == 0) return;
  pan_ += delta;
  invalidate();
}

// The box around the railway, without nodes and handles, and the picture, in pixels; empty for an
// empty view.
PixelBox DiagramCanvas::drawn_box() {
  update();
  const auto context = image_->measure();
  context->set_matrix(matrix_);
  std::optional<PixelBox> all;
  const auto add = [&all](const PixelBox& box) { all = all ? all->united(box) : box; };
  for (const auto& object : view_.get_objects()) add(object->runtime_box(context));
  if (const auto& picture = view_.image(); picture.pixbuf()) {
    const auto from = to_canvas({0, 0});
    const auto to =
        to_canvas({static_cast<double>(picture.width()), static_cast<double>(picture.height())});
    add({from.x, from.y, to.x, to.y});
  }
  return all.value_or(PixelBox{});
}

// A canvas with a large picture is larger than its window and scrolled, so only a part is visible.
PixelBox DiagramCanvas::visible_box() const {
  const auto window = const_cast<DiagramCanvas*>(this)->get_window();
  GdkRectangle seen{};
  if (window) {
    auto* region = gdk_drawable_get_visible_region(GDK_DRAWABLE(window->gobj()));
    gdk_region_get_clipbox(region, &seen);
    gdk_region_destroy(region);
  }
  if (seen.width == 0 || seen.height == 0) return {0, 0, size().x, size().y};
  return {static_cast<double>(seen.x), static_cast<double>(seen.y),
          static_cast<double>(seen.x + seen.width), static_cast<double>(seen.y + seen.height)};
}

void DiagramCanvas::check_visibility_soon() {
  if (check_soon_.connected()) return;
  check_soon_ =
      Glib::signal_idle().connect([this] { return check_visibility(), false; }, Glib::PRIORITY_LOW);
}

// Skipped during a drag, after which everything is drawn anew.
void DiagramCanvas::check_visibility() {
  if (!floating_.empty() || !get_mapped()) return;
  const auto box = drawn_box();
  const auto seen = visible_box();
  const auto cut = box.intersected(seen);
  const auto beyond = (box.extent() - cut.extent());
  all_seen_ = box.empty() || (!cut.empty() && beyond.x <= slack && beyond.y <= slack);
  signal_visibility_checked_.emit();
}

// Before the first layout a canvas has a size of one pixel.
bool DiagramCanvas::has_size() const {
  return get_realized() && get_width() > 1 && get_height() > 1;
}

// Computes the zoom twice, because names and edges have nearly the same size in pixels at any zoom.
void DiagramCanvas::show_whole() {
  fit_waits_ = !has_size();
  if (fit_waits_) return;
  const auto seen = visible_box();
  for (int round = 0; round < 2; ++round) {
    const auto box = drawn_box();
    const auto extent = box.extent();
    pan_ = {0, 0};
    if (box.empty()) {
      zoom_ = 1;
    } else {
      const auto middle = to_view(box.middle());
      const double share =
          std::min(seen.extent().x / extent.x, seen.extent().y / extent.y) * part_of_canvas;
      zoom_ = std::clamp(zoom_ * share, least_zoom, 1.0);
      place_view();
      pan_ = seen.middle() - to_canvas(middle);
    }
    invalidate();
  }
}

void DiagramCanvas::zoom_in() {
  zoom_about(visible_box().middle(), zoom_step, zoom_step - 1);
}

void DiagramCanvas::zoom_out() {
  zoom_about(visible_box().middle(), 1 / zoom_step, 1 / zoom_step - 1);
}

// --- Input ---

bool DiagramCanvas::on_button_press_event(GdkEventButton* event) {
  if (event->type != GDK_BUTTON_PRESS || event->button != 2) return false;
  // An action of another button continues.
  if (mode_ != Mode::idle && mode_ != Mode::panning) return false;
  last_x_ = event->x;
  last_y_ = event->y;
  mode_ = Mode::panning;
  return true;
}

bool DiagramCanvas::on_button_release_event(GdkEventButton* event) {
  if (event->button != 2 || mode_ != Mode::panning) return false;
  mode_ = Mode::idle;
  return true;
}

bool DiagramCanvas::on_motion_notify_event(GdkEventMotion* event) {
  if (mode_ != Mode::panning) return false;
  // The button was released without an event for the canvas.
  if ((event->state & GDK_BUTTON2_MASK) == 0) {
    mode_ = Mode::idle;
    return true;
  }
  pan_ += Vector{event->x - last_x_, event->y - last_y_};
  last_x_ = event->x;
  last_y_ = event->y;
  invalidate();
  return true;
}

bool DiagramCanvas::on_scroll_event(GdkEventScroll* event) {
  const Vector pointer{event->x, event->y};
  if (event->direction == GDK_SCROLL_UP) {
    zoom_about(pointer, zoom_step, zoom_step - 1);
  } else if (event->direction == GDK_SCROLL_DOWN) {
    zoom_about(pointer, 1 / zoom_step, 1 / zoom_step - 1);
  } else {
    return false;
  }
  return true;
}

bool DiagramCanvas::on_key_press_event(GdkEventKey* event) {
  const bool plain = (event->state & gtk_accelerator_get_default_mod_mask()) == 0;
  const auto way = plain ? arrow_way(event->keyval) : std::nullopt;
  if (!way) return Gtk::DrawingArea::on_key_press_event(event);
  pan_ = pan_ - *way * key_step;
  invalidate();
  return true;
}

std::shared_ptr<const ViewTag> DiagramCanvas::hit_near(
    const Vector& place, int reach, const std::function<bool(const ViewTag&)>& wanted) {
  std::shared_ptr<const ViewTag> nearest;
  int least = reach * reach + 1;
  for (int y = -reach; y <= reach; ++y) {
    for (int x = -reach; x <= reach; ++x) {
      const int distance = x * x + y * y;
      if (distance >= least) continue;
      const auto& tag = hit(place.x + x, place.y + y);
      if (!tag || !wanted(*tag)) continue;
      nearest = tag;
      least = distance;
    }
  }
  return nearest;
}

// Keeps the place under the pointer fixed.
void DiagramCanvas::zoom_about(const Vector& pointer, double factor, double share) {
  const double zoom = zoom_ * factor;
  if (zoom < least_zoom || zoom > most_zoom) return;
  zoom_ = zoom;
  pan_ += (size() * 0.5 + pan_ - pointer) * share;
  invalidate();
}

}  // namespace zemblar
