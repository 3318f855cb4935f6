#pragma once

#include "diagram/view_link_node.h"
#include "edit/edit_journal.h"
#include "ui/canvas/diagram_canvas.h"

namespace zemblar {

/// The canvas of the track editor: shows a view plainly, with its nodes, and which object is
/// selected.
///
/// A click selects, a drag moves what is under the pointer: an object, a node, a handle. With Ctrl
/// held an end that is dropped on one of another object joins the two; while it is dragged, only
/// ends that it can be joined to are met, and the one under the pointer is marked. The status line
/// says why a drop joins nothing. The right button opens the menu of what is under it. An object
/// that has just been made follows the pointer until a click places it, or the right button or
/// Escape takes it away; meanwhile clicks outside the canvas go to the widgets there. Nodes
/// and track are met some pixels beside them, at any zoom. Delete removes what is selected from the
/// view.
///
/// What is dragged or placed keeps to the grid of the options, unless Alt is held.
class EditorView : public DiagramCanvas {
 public:
  explicit EditorView(View& view);

  /// Null when nothing is selected.
  [[nodiscard]] ViewObj* get_selected() const { return selected_; }
  sigc::signal<void>& signal_selected_changed() { return signal_selected_changed_; }

  /// Puts a new object into the view, which owns it, and has it follow the pointer. When that is
  /// cancelled it is removed, and `cancelled` is called.
  void place(ViewObj* object, const std::function<void()>& cancelled);
  /// Ends what is being dragged, where it is, and takes away what is being placed.
  void finish();
  void select(ViewObj* object);
  /// Puts what is selected, or its chosen end or node, on the grid, and levels what nearly is
  /// level.
  void align();
  /// An object has been placed.
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
  /// The distance from a node at which it is met at any zoom, in pixels.
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
  Tag tag_;                    // what is pressed or dragged
  Vector grip_;                // from the anchor of what is dragged to where it was taken
  Vector came_from_;           // of the node that is dragged, in the view
  Vector pointer_;             // while something is dragged
  bool joins_ = false;         // if it were dropped now
  Glib::ustring refusal_;      // as it was told
  ViewObj* placed_ = nullptr;  // what follows the pointer
  std::function<void()> cancelled_;
  std::optional<EditJournal::Hold> placing_;  // making and placing are one step
  std::optional<std::size_t> part_;           // of what is selected, that keys act on
  std::optional<EditJournal::Hold> nudging_;  // while an arrow key is held
  sigc::signal<void> signal_selected_changed_;
  sigc::signal<void> signal_placed_;
  ScopedConnection object_changed_;
  ScopedConnection renamed_;
  ScopedConnection object_removed_;
  ScopedConnection grab_soon_;
};

}  // namespace zemblar
