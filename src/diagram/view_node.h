#pragma once

#include <cairomm/context.h>
#include <sigc++/trackable.h>

#include "diagram/vector.h"
#include "diagram/view_tag.h"

namespace Gtk {
class MenuItem;
}

namespace zemblar {

class ViewObj;

/// A point on a diagram object's track, with the direction of the track there and two handles that
/// shape the curves on both sides.
///
/// A straight segment makes its two nodes neighbours, and their positions then determine the
/// direction. A node without neighbours keeps its own direction; if the angle is locked, dragging a
/// handle does not change it.
///
/// In a layout file a mapping: `pos` always; `dir` unless neighbours determine it; `left` and
/// `right`, the lengths of the handles that exist; `locked`.
class ViewNode : public sigc::trackable {
 public:
  /// The part of a node that a tag represents.
  enum Part { body = 0, left_handle = 1, right_handle = 2 };
  struct Tag : ViewTag {
    Tag(ViewNode* tagged, Part tagged_part);

    ViewNode* node;
    Part part;
  };

  static constexpr double shortest_handle = 4.0;
  /// Radius of the node's disc.
  static constexpr double reach = 4.75;

  ViewNode() = default;
  ViewNode(const ViewNode&) = delete;
  ViewNode& operator=(const ViewNode&) = delete;

  /// Call after changing `pos`: updates the neighbours and redraws.
  virtual void moved();
  virtual ~ViewNode();
  /// Sets the direction from the neighbours or the lead, if there are any.
  virtual void refresh();
  virtual void draw(const Cairo::RefPtr<Cairo::Context>& context) const;
  virtual void draw_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table);
  virtual void draw_left_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table);
  virtual void draw_right_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table);
  /// Moves a part of the node to a place.
  virtual void drag(Part part, const Vector& position);
  /// The direction of the track, averaged with that of the joined node.
  [[nodiscard]] virtual Vector get_path_direction() const { return dir; }
  /// True if dragging a handle does not change the direction.
  [[nodiscard]] virtual bool is_locked() const;
  /// Has an effect only for a node without neighbours.
  virtual void set_locked(bool on);
  /// A new managed item "Lock Angle", or null if the angle cannot be locked.
  [[nodiscard]] virtual Gtk::MenuItem* get_menu_item();

  /// Sets the owner; call once. A second call throws std::logic_error "ViewLinkNode::set_object()
  /// called twice".
  void set_object(ViewObj* object);
  [[nodiscard]] ViewObj* get_object() const { return object_; }

  [[nodiscard]] ViewNode* get_left_node() const { return left_node_; }
  [[nodiscard]] ViewNode* get_right_node() const { return right_node_; }
  /// Sets or, with null, removes a neighbour. Neighbours are mutual: both nodes are updated, and
  /// former neighbours are removed.
  void set_left_node(ViewNode* node);
  void set_right_node(ViewNode* node);
  [[nodiscard]] bool has_neighbour() const { return left_node_ || right_node_; }
  /// The start of a straight segment that ends here, if the start already has another neighbour on
  /// that side; else null. Like a neighbour, the lead determines the direction at the next
  /// `refresh`.
  void set_lead(const ViewNode* start) { lead_ = start; }
  [[nodiscard]] const ViewNode* get_lead() const { return lead_; }
  /// True if a neighbour or a lead determines the direction.
  [[nodiscard]] bool is_led() const { return has_neighbour() || lead_; }

  [[nodiscard]] Vector left_point() const { return pos - dir * left; }
  [[nodiscard]] Vector right_point() const { return pos + dir * right; }
  /// Adds or changes a handle; the length is at least `shortest_handle`.
  void set_left_handle(double length);
  void set_right_handle(double length);
  [[nodiscard]] double get_angle() const { return dir.get_angle(); }

  /// Draws the handles as dashed lines that end in squares.
  void draw_handles(const Cairo::RefPtr<Cairo::Context>& context) const;

  virtual void load(const YAML::Node& node);
  void save(YAML::Emitter& out) const;

  // Written by the drag code, which then calls `moved` and `refresh`.
  Vector pos;
  Vector dir;       ///< of length 1, or zero while unknown
  double left = 0;  ///< length of the left handle
  double right = 0;
  bool has_left = false;
  bool has_right = false;

 protected:
  /// Call before changing anything of the node that is saved.
  void before_change() const;
  /// Changes the direction and redraws everything that depends on it.
  virtual void turn(const Vector& direction);
  [[nodiscard]] virtual std::shared_ptr<const ViewTag> make_tag(Part part);
  [[nodiscard]] virtual bool is_joined() const { return false; }
  /// Writes the keys that a derived class adds to the mapping.
  virtual void save_more(YAML::Emitter& /*out*/) const {}
  /// The direction from the neighbours or the lead; zero without any.
  [[nodiscard]] Vector direction_of_neighbours() const;
  /// The menu item that locks the angle.
  [[nodiscard]] Gtk::MenuItem* make_lock_item();

  bool locked_ = false;

 private:
  void draw_handle_square(const Cairo::RefPtr<Cairo::Context>& context, const Vector& place) const;
  void drag_handle(double& length, const Vector& delta);

  ViewNode* left_node_ = nullptr;
  ViewNode* right_node_ = nullptr;
  const ViewNode* lead_ = nullptr;
  ViewObj* object_ = nullptr;
};

}  // namespace zemblar
