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

/// A canvas that shows a view, which must outlive it: zoomed with the wheel about the pointer,
/// panned with the middle button.
///
/// What is shown is kept as a pixmap, which is copied when the window system asks. It is drawn in
/// an image: anew as a whole when anything may have changed, and only around the object when one
/// has; several changes in a row are one repaint. Beside it a picture of tags says what is under
/// the pointer. It is brought up to date when the window shows the change and nothing else waits,
/// or before that if the pointer asks.
class DiagramCanvas : public Gtk::DrawingArea {
 public:
  /// Both displays; the hint stands in the middle of an empty view.
  DiagramCanvas(View& view, const Glib::ustring& hint);

  [[nodiscard]] View& get_view() const { return view_; }
  [[nodiscard]] double get_zoom() const { return zoom_; }
  /// The place of the view that is under a place of the canvas, and back.
  [[nodiscard]] Vector to_view(const Vector& place) const;
  [[nodiscard]] Vector to_canvas(const Vector& place) const;
  /// What is under a place of the canvas; null for nothing. Only after an update; who keeps it
  /// beyond the next one copies it.
  [[nodiscard]] const std::shared_ptr<const ViewTag>& hit(double x, double y) {
    if (tags_wait_) update_tags();
    return tags_.hit(x, y);
  }

  /// The wanted tag that is nearest to a place of the canvas, within `reach` pixels; null for none.
  [[nodiscard]] std::shared_ptr<const ViewTag> hit_near(
      const Vector& place, int reach, const std::function<bool(const ViewTag&)>& wanted);

  /// The drawing and the picture as a whole, in the middle of what can be seen of the canvas; no
  /// larger than they are. A canvas without a size does it when it has got one.
  void show_whole();
  /// The part of the canvas that the railway of an object covers, in pixels, without nodes and
  /// handles.
  [[nodiscard]] PixelBox box_on_canvas(ViewObj& object);
  /// By one step of the wheel, about the middle of what can be seen.
  void zoom_in();
  void zoom_out();

  /// Whether the drawing and the picture were in sight as a whole when that was last looked at.
  [[nodiscard]] bool is_all_seen() const { return all_seen_; }
  /// Emitted when is_all_seen is known anew, some time after the picture or its visible part has
  /// changed.
  sigc::signal<void>& signal_looked() { return signal_looked_; }

  /// Everything has to be drawn anew.
  void invalidate();
  /// How often the canvas has been drawn, as a whole and in part.
  struct Repaints {
    unsigned whole = 0;
    unsigned parts = 0;
  };
  [[nodiscard]] const Repaints& repaints() const { return repaints_; }
  /// Brings image and pixmap up to date; does nothing when they are.
  void update();
  /// What is shown; only after an update.
  [[nodiscard]] const Glib::RefPtr<Gdk::Pixmap>& pixmap() const { return image_->pixmap(); }

 protected:
  using Context = Cairo::RefPtr<Cairo::Context>;

  virtual void draw_object(const Context& context, ViewObj& object) = 0;
  virtual void draw_tags(const Context& context, ViewObj& object, SelectionTable& table) = 0;
  /// On the window, over objects that are being moved.
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
  /// Arrows move the picture.
  bool on_key_press_event(GdkEventKey* event) override;

  /// What the pointer is doing. A display that is only looked at pans.
  enum class Mode { idle = 0, pressed = 1, dragging = 2, placing = 3, panning = 4 };
  Mode mode_ = Mode::idle;
  double last_x_ = 0;
  double last_y_ = 0;

  /// The drawing may reach further, or less far.
  void look_soon();
  /// Pans until the box lies where the window shows the canvas; its left upper corner if it is too
  /// large.
  void bring_into_sight(const PixelBox& box);

  /// The part of the canvas that the window shows, in pixels.
  [[nodiscard]] PixelBox visible_box() const;

  /// Objects that are being moved: left out of the kept picture, and drawn over it on the window.
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
  void look();

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
  bool fit_waits_ = false;            // show_whole, for a size
  std::optional<CanvasImage> image_;  // none before the first update
  Context direct_;                    // on the window; see on_expose_event
  TagImage tags_;
  bool tags_wait_ = false;            // to be painted anew
  std::vector<PixelBox> stale_tags_;  // only there; everywhere when empty
  std::size_t whole_table_ = 0;       // how many tags a whole picture has
  std::unordered_map<const ViewObj*, PixelBox> boxes_;
  std::vector<PixelBox> stale_;  // to be drawn anew
  std::vector<ViewObj*> floating_;
  ScopedConnection floating_removed_;
  Repaints repaints_;
  PixelBox seen_;  // at the last expose
  bool all_seen_ = true;
  sigc::signal<void> signal_looked_;
  ScopedConnection view_changed_;
  ScopedConnection object_added_;
  ScopedConnection colour_changed_;
  ScopedConnection image_changed_;
  ScopedConnection tags_soon_;
  ScopedConnection look_soon_;
};

}  // namespace zemblar
