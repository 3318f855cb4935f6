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

/// A diagram object: shows one object of the layout in one view, and outlives neither.
///
/// In an editor it is drawn plainly, and with its nodes when it is selected; on the operating
/// display as the railway is now. In both it can say which pixels are its own, part by part.
class ViewObj : public Glib::Object {
 public:
  using Context = Cairo::RefPtr<Cairo::Context>;

  ViewObj(const ViewObj&) = delete;
  ViewObj& operator=(const ViewObj&) = delete;
  ~ViewObj() override;

  /// What it shows; null when a file names something that is not there.
  [[nodiscard]] virtual zemblar::Object* get_object() const = 0;
  [[nodiscard]] View* get_view() const { return view_; }
  /// Tells the former view that it has lost the object, and the new one that it has it.
  void set_view(View* view);
  /// As an entry of a view; each class writes its own.
  virtual void save(YAML::Emitter& out) const;

  virtual void draw(const Context& context, bool selected) { draw_plain(context, selected); }
  virtual void draw_runtime(const Context& context) { draw_live(context); }
  /// Under the object, in the context's colour: shows on any paper that it is selected.
  virtual void draw_glow(const Context& context);
  /// What `draw_runtime` can cover, in pixels.
  [[nodiscard]] virtual PixelBox runtime_box(const Context& context) = 0;

  /// The body, above it the links, above them the handles.
  void draw_tags(const Context& context, bool selected, SelectionTable& table);
  /// Only the ends that the end that is being dragged could be joined to.
  virtual void draw_link_target_tags(const Context& /*context*/, SelectionTable& /*table*/,
                                     const ViewLinkNode& /*dragged*/) {}
  /// Only what can be clicked on the operating display.
  virtual void draw_runtime_tags(const Context& /*context*/, SelectionTable& /*table*/) {}

  /// A click of the left button on the operating display.
  virtual void click(const ViewTag& /*tag*/) {}
  /// A part of it is dragged: from a place, then to others. What is no part drags the whole.
  virtual void drag_start(const ViewTag& tag, const Vector& position);
  virtual void drag_move(const ViewTag& tag, const Vector& position);
  /// The place that is put on a grid when the whole is moved.
  [[nodiscard]] virtual Vector anchor() { return get_place(); }
  /// Puts all its places on a grid, and lays level or upright what nearly is.
  virtual void align(double step);
  /// It has just been made, and follows the pointer.
  virtual void drag_right(const Vector& position);
  /// Those that have to be drawn with it while it is dragged: what its ends are joined to.
  [[nodiscard]] virtual std::vector<ViewObj*> dependants() { return {}; }
  /// Its menu, over the canvas.
  virtual void show_menu(const ViewTag& /*tag*/, guint32 /*time*/) {}
  /// Null for a name that no end of its track has.
  [[nodiscard]] virtual ViewLinkNode* get_link_node(const std::string& /*name*/) { return nullptr; }

  /// Somebody has moved one of its nodes.
  virtual void node_moved(const ViewNode& /*node*/) {}
  /// It is about to leave its view, though somebody may still hold it.
  virtual void on_leaving() {}

  /// Changes the order of drawing.
  void move_to_top();
  void move_to_bottom();
  /// Takes it out of its view, and ends it.
  void remove();
  /// What it shows has changed, and nothing else.
  void changed();
  /// Said before anything changes that belongs to its entry in a file.
  void before_change();

 protected:
  ViewObj() = default;

  /// From now on it shows that object, and ends with it.
  void follow_end(zemblar::Object& object);

  virtual void draw_plain(const Context& context, bool selected) = 0;
  /// Moves the whole.
  virtual void move_by(const Vector& delta) = 0;
  /// Its middle.
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
