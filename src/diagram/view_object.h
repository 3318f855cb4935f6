#pragma once

#include <glibmm/object.h>

#include <string>
#include <vector>

#include "core/object.h"
#include "diagram/track_path.h"
#include "diagram/view_tag.h"
#include "runtime/scoped_connection.h"

namespace zemblar {

class View;
class ViewLinkNode;
class ViewNode;

/// A diagram object: shows one object of the layout in one view, and is removed when either ends.
///
/// An editor draws it plainly, and with its nodes when selected. The operating display draws the
/// present state of the railway. For both it paints tags, by which the pixels of each part are
/// recognised.
class ViewObj : public Glib::Object {
 public:
  using Context = Cairo::RefPtr<Cairo::Context>;

  ViewObj(const ViewObj&) = delete;
  ViewObj& operator=(const ViewObj&) = delete;
  ~ViewObj() override;

  /// The object of the layout that it shows; null when the file names a missing one.
  [[nodiscard]] virtual zemblar::Object* get_object() const = 0;
  [[nodiscard]] View* get_view() const { return view_; }
  /// Sets the view; emits `signal_object_removed` of the former one and `signal_object_added` of
  /// the new one.
  void set_view(View* view);
  /// Writes the object as an entry of a view; each class overrides it.
  virtual void save(YAML::Emitter& out) const;

  virtual void draw(const Context& context, bool selected) { draw_plain(context, selected); }
  virtual void draw_runtime(const Context& context) { draw_live(context); }
  /// Drawn under the object in the context's colour, to show on any background that it is selected.
  virtual void draw_glow(const Context& context);
  /// A box around everything that `draw_runtime` can draw, in pixels.
  [[nodiscard]] virtual PixelBox runtime_box(const Context& context) = 0;

  /// Paints the tags of the body, above them those of the links, above these those of the handles.
  void draw_tags(const Context& context, bool selected, SelectionTable& table);
  /// Paints only the tags of ends to which the end being dragged can be joined.
  virtual void draw_link_target_tags(const Context& /*context*/, SelectionTable& /*table*/,
                                     const ViewLinkNode& /*dragged*/) {}
  /// Paints only the tags of parts that can be clicked on the operating display.
  virtual void draw_runtime_tags(const Context& /*context*/, SelectionTable& /*table*/) {}

  /// A click of the left button on the operating display; `insists` if Shift was held, see
  /// point_guard.h.
  virtual void click(const ViewTag& /*tag*/, bool /*insists*/) {}
  /// A part of the object is dragged from a place to others. A tag that is no part drags the whole
  /// object.
  virtual void drag_start(const ViewTag& tag, const Vector& position);
  virtual void drag_move(const ViewTag& tag, const Vector& position);
  /// The place that is put on the grid when the whole object is moved.
  [[nodiscard]] virtual Vector anchor() { return get_place(); }
  /// Puts all places of the object on a grid, and makes nearly horizontal or vertical tracks
  /// exactly so.
  virtual void align(double step);
  /// The object has just been made, and follows the pointer.
  virtual void drag_right(const Vector& position);
  /// The objects that must be redrawn with this one while it is dragged, because they are joined to
  /// it.
  [[nodiscard]] virtual std::vector<ViewObj*> dependants() { return {}; }
  /// Shows the object's context menu.
  virtual void show_menu(const ViewTag& /*tag*/, guint32 /*time*/) {}
  /// The node for the link with this name; null if there is none.
  [[nodiscard]] virtual ViewLinkNode* get_link_node(const std::string& /*name*/) { return nullptr; }

  /// One of the object's nodes has been moved.
  virtual void node_moved(const ViewNode& /*node*/) {}
  /// The object is about to be removed from its view; references to it may remain.
  virtual void on_leaving() {}

  /// Changes the order of drawing.
  void move_to_top();
  void move_to_bottom();
  /// Removes the object from its view, which ends it.
  void remove();
  /// Call when the picture of this object has changed, and of no other.
  void changed();
  /// Call before changing anything that is saved in the object's entry; undo and recovery depend on
  /// it.
  void before_change();

 protected:
  ViewObj() = default;

  /// Watches the end of the object shown, which removes this one.
  void follow_end(zemblar::Object& object);

  virtual void draw_plain(const Context& context, bool selected) = 0;
  /// Moves the whole object.
  virtual void move_by(const Vector& delta) = 0;
  /// The middle of the object.
  [[nodiscard]] virtual Vector get_place() = 0;
  virtual void draw_live(const Context& context) = 0;
  virtual void draw_handle_tags(const Context& /*context*/, bool /*selected*/,
                                SelectionTable& /*table*/) {}
  virtual void draw_link_tags(const Context& /*context*/, bool /*selected*/,
                              SelectionTable& /*table*/) {}
  virtual void draw_body_tags(const Context& /*context*/, bool /*selected*/,
                              SelectionTable& /*table*/) {}

 private:
  View* view_ = nullptr;
  Vector dragged_from_;
  ScopedConnection shown_deleted_;
};

}  // namespace zemblar
