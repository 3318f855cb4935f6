#pragma once

#include <gtkmm/drawingarea.h>

#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

#include "diagram/view.h"
#include "runtime/scoped_connection.h"
#include "ui/canvas/canvas_image.h"

namespace zemblar {

/// A canvas that shows a view. The wheel zooms at the pointer, the middle button pans. The view
/// must outlive the canvas.
///
/// The picture is kept in a CanvasImage, whose pixmap is copied at each expose event. When a single
/// object changes, only the area around it is redrawn; when anything may have changed, everything
/// is. Several changes in a row cause one repaint. A TagImage of the same size tells what is under
/// the pointer. It is updated when the window shows the change and the main loop is idle, or
/// earlier when `hit` is called.
class DiagramCanvas : public Gtk::DrawingArea {
 public:
  /// `hint` is a text in the middle of an empty view.
  DiagramCanvas(View& view, const Glib::ustring& hint);

  [[nodiscard]] View& get_view() const { return view_; }
  [[nodiscard]] double get_zoom() const { return zoom_; }
  /// Converts between places on the canvas, in pixels, and in the view, in diagram units.
  [[nodiscard]] Vector to_view(const Vector& place) const;
  [[nodiscard]] Vector to_canvas(const Vector& place) const;
  /// The tag at a place of the canvas, or null. Call `update` before; copy the pointer to keep it
  /// beyond the next update.
  [[nodiscard]] const std::shared_ptr<const ViewTag>& hit(double x, double y) {
    if (tags_wait_) update_tags();
    return tags_.hit(x, y);
  }

  /// The nearest tag for which `wanted` is true, within `reach` pixels of a place of the canvas;
  /// null for none.
  [[nodiscard]] std::shared_ptr<const ViewTag> hit_near(
      const Vector& place, int reach, const std::function<bool(const ViewTag&)>& wanted);

  /// Zooms and pans so that the whole drawing with its picture is visible, centred in the visible
  /// part of the canvas, at a zoom of at most 1. If the canvas has no size yet, this happens as
  /// soon as it has one.
  void show_whole();
  /// The area of an object on the canvas, in pixels, without nodes and handles.
  [[nodiscard]] PixelBox box_on_canvas(ViewObj& object);
  /// Zoom by one step of the wheel, around the middle of the visible part.
  void zoom_in();
  void zoom_out();

  /// True if the whole drawing with its picture was visible at the last check.
  [[nodiscard]] bool is_all_seen() const { return all_seen_; }
  /// Emitted after each check for `is_all_seen`, some time after the picture or its visible part
  /// has changed.
  sigc::signal<void>& signal_visibility_checked() { return signal_visibility_checked_; }

  /// Requests that everything is drawn anew.
  void invalidate();
  /// Number of repaints, of the whole picture and of parts.
  struct Repaints {
    unsigned whole = 0;
    unsigned parts = 0;
  };
  [[nodiscard]] const Repaints& repaints() const { return repaints_; }
  /// Brings image and pixmap up to date, if they are not.
  void update();
  /// The shown picture. Call `update` before.
  [[nodiscard]] const Glib::RefPtr<Gdk::Pixmap>& pixmap() const { return image_->pixmap(); }

 protected:
  using Context = Cairo::RefPtr<Cairo::Context>;

  virtual void draw_object(const Context& context, ViewObj& object) = 0;
  virtual void draw_tags(const Context& context, ViewObj& object, SelectionTable& table) = 0;
  /// Draws on the window over the floating objects.
  virtual void draw_over(const Context& /*context*/) {}
  [[nodiscard]] virtual PixelBox box_of(const Context& context, ViewObj& object) = 0;

  bool on_expose_event(GdkEventExpose* event) override;
  void on_size_allocate(Gtk::Allocation& allocation) override;
  void on_map() override;
  void on_unrealize() override;
  void on_size_request(Gtk::Requisition* requisition) override;
  bool on_button_press_event(GdkEventButton* event) override;
  bool on_button_release_event(GdkEventButton* event) override;
  bool on_motion_notify_event(GdkEventMotion* event) override;
  bool on_scroll_event(GdkEventScroll* event) override;
  /// Arrow keys pan.
  bool on_key_press_event(GdkEventKey* event) override;

  /// What the pointer is doing. The operating display only pans.
  enum class Mode { idle = 0, pressed = 1, dragging = 2, placing = 3, panning = 4 };
  Mode mode_ = Mode::idle;
  double last_x_ = 0;
  double last_y_ = 0;

  /// Call when the extent of the drawing may have changed: checks `is_all_seen` when the main loop
  /// is idle.
  void check_visibility_soon();
  /// Pans until the box, given in pixels, is in the visible part. If the box is larger than that,
  /// its top left corner is shown.
  void bring_into_sight(const PixelBox& box);

  /// The visible part of the canvas, in pixels.
  [[nodiscard]] PixelBox visible_box() const;

  /// Sets the floating objects, those that are being moved. They are not drawn in the kept picture,
  /// but over it on the window.
  void set_floating(std::vector<ViewObj*> objects);

 private:
  void on_view_changed();
  void on_object_changed(ViewObj& object);
  void follow_colour();
  void zoom_about(const Vector& pointer, double factor, double share);
  [[nodiscard]] Vector size() const;
  [[nodiscard]] bool has_size() const;
  void place_view();
  [[nodiscard]] PixelBox drawn_box();
  void check_visibility();

  void repaint(int width, int height);
  void repaint_parts();
  void paint_background(const Context& context);
  void paint_hint(const Context& context);
  void update_tags_soon();
  void update_tags();
  void paint_tags();
  void paint_tags_in(const PixelBox& part);
  [[nodiscard]] bool is_current() const;
  [[nodiscard]] int shown_width() const;
  [[nodiscard]] int shown_height() const;
  [[nodiscard]] bool floats(const ViewObj& object) const;
  void draw_floating(const GdkEventExpose& event);

  View& view_;
  Glib::ustring hint_;
  double zoom_ = 1.0;
  Vector pan_;
  Cairo::Matrix matrix_ = Cairo::identity_matrix();

  bool dirty_ = true;
  bool fit_waits_ = false;            // show_whole waits for a size
  std::optional<CanvasImage> image_;  // no value before the first update
  Context direct_;                    // unused, but speeds up exposes; see on_expose_event
  TagImage tags_;
  bool tags_wait_ = false;            // the tag image is out of date
  std::vector<PixelBox> stale_tags_;  // the parts that are out of date; empty means all
  std::size_t whole_table_ = 0;       // number of tags when last painted as a whole
  std::unordered_map<const ViewObj*, PixelBox> boxes_;
  std::vector<PixelBox> stale_;  // parts to be drawn anew
  std::vector<ViewObj*> floating_;
  ScopedConnection floating_removed_;
  Repaints repaints_;
  PixelBox seen_;  // the visible box at the last expose
  bool all_seen_ = true;
  sigc::signal<void> signal_visibility_checked_;
  ScopedConnection view_changed_;
  ScopedConnection object_added_;
  ScopedConnection colour_changed_;
  ScopedConnection image_changed_;
  ScopedConnection tags_soon_;
  ScopedConnection check_soon_;
};

}  // namespace zemblar
