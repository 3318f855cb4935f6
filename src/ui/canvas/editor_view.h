#pragma once

#include "diagram/view_link_node.h"
#include "edit/edit_journal.h"
#include "ui/canvas/diagram_canvas.h"

namespace zemblar {

/// The canvas of the track editor: shows a view plainly, with its nodes and the selection.
///
/// A click selects; a drag moves the object, node or handle under the pointer. With Ctrl held,
/// dropping an end on an end of another object joins the two. While it is dragged, only ends that
/// it can be joined to are hit, and the one under the pointer is marked. The status line says why a
/// drop joins nothing. The right button opens the menu of the part under the pointer. A new object
/// follows the pointer until a click places it, or the right button or Escape removes it; meanwhile
/// clicks outside the canvas go to the widgets there. At any zoom, a click some pixels beside a
/// node or track hits it. Delete removes the selected object from the view.
///
/// Parts that are dragged or placed snap to the grid of GlobalOptions, unless Alt is held.
class EditorView : public DiagramCanvas {
 public:
  explicit EditorView(View& view);

  /// The selected object, or null.
  [[nodiscard]] ViewObj* get_selected() const { return selected_; }
  sigc::signal<void>& signal_selected_changed() { return signal_selected_changed_; }

  /// Adds a new object to the view, which takes ownership, and lets the object follow the pointer.
  /// Cancelling removes it and calls `cancelled`.
  void place(ViewObj* object, const std::function<void()>& cancelled);
  /// Ends a drag at the present place, and removes an object that is being placed.
  void finish();
  void select(ViewObj* object);
  /// Puts the selected object, or its chosen end or node, on the grid, and makes nearly horizontal
  /// or vertical tracks exactly so.
  void align();
  /// A new object has been placed.
  sigc::signal<void>& signal_placed() { return signal_placed_; }

 protected:
  void draw_object(const Context& context, ViewObj& object) override;
  void draw_tags(const Context& context, ViewObj& object, SelectionTable& table) override;
  void draw_over(const Context& context) override;
  [[nodiscard]] PixelBox box_of(const Context& context, ViewObj& object) override;
  bool on_button_press_event(GdkEventButton* event) override;
  bool on_button_release_event(GdkEventButton* event) override;
  bool on_motion_notify_event(GdkEventMotion* event) override;
  bool on_key_press_event(GdkEventKey* event) override;
  bool on_key_release_event(GdkEventKey* event) override;
  bool on_focus_out_event(GdkEventFocus* event) override;
  bool on_enter_notify_event(GdkEventCrossing* event) override;
  bool on_leave_notify_event(GdkEventCrossing* event) override;
  void on_unmap() override;

 private:
  using Tag = std::shared_ptr<const ViewTag>;
  /// The distance in pixels, at any zoom, up to which a click hits a node.
  static constexpr double node_reach = 9;

  void press(const GdkEventButton& event);
  void start_drag(const Vector& pointer, unsigned state);
  void drop(const GdkEventButton& event);
  void drag_to(const Vector& pointer, unsigned state);
  void place_at(const Vector& pointer, unsigned state);
  [[nodiscard]] static Vector next_line(const Vector& from, const Vector& way);
  void aim(const Vector& pointer, bool joins);
  [[nodiscard]] ViewLinkNode* dragged_end() const;
  [[nodiscard]] ViewLinkNode* target_at(const Vector& pointer);
  [[nodiscard]] ViewLinkNode* end_near(const Vector& pointer) const;
  void join_at(const Vector& pointer);
  void join(ViewLinkNode& end, ViewLinkNode& target);
  void refuse(const Glib::ustring& reason);
  void grab_pointer();
  [[nodiscard]] bool holds(const Vector& place) const;
  void end_placing(bool placed);
  [[nodiscard]] SelectionTable parts_of(ViewObj& object);
  [[nodiscard]] Tag current_part();
  void draw_current_part(const Context& context);
  bool select_next(bool back);
  bool show_part_menu();
  void next_part(bool back);
  void choose_part(std::optional<std::size_t> part);
  void bring_part_into_sight(const ViewTag& part);
  void describe();
  [[nodiscard]] Glib::ustring description_of(const ViewTag& part) const;
  [[nodiscard]] Tag hit_about(const Vector& pointer);
  void nudge(const Vector& way, bool finely);
  void join_nearest();
  static gboolean on_grab_broken(GtkWidget* widget, GdkEventGrabBroken* event, EditorView* view);
  void on_object_removed(ViewObj* object);

  ViewObj* selected_ = nullptr;
  Tag tag_;                // the part that is pressed or dragged
  Vector grip_;            // from the anchor of the dragged object to the point that was pressed
  Vector came_from_;       // place of the dragged node before the drag, in the view
  Vector pointer_;         // place of the pointer during a drag
  bool joins_ = false;     // whether dropping now would join, because Ctrl is held
  Glib::ustring refusal_;  // text of the status line about a refused join
  ViewObj* placed_ = nullptr;  // the new object that follows the pointer
  std::function<void()> cancelled_;
  std::optional<EditJournal::Hold> placing_;  // makes creating and placing one step
  std::optional<std::size_t> part_;           // the part of the selected object that keys act on
  std::optional<EditJournal::Hold> nudging_;  // makes all moves one step while an arrow key is held
  sigc::signal<void> signal_selected_changed_;
  sigc::signal<void> signal_placed_;
  ScopedConnection object_changed_;
  ScopedConnection renamed_;
  ScopedConnection object_removed_;
  ScopedConnection grab_soon_;
};

}  // namespace zemblar
