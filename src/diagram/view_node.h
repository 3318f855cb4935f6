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

/// A point of a diagram object's track, with the direction of the track there and two handles that
/// bend the curves to its sides.
///
/// A segment that is straight makes its two nodes neighbours; the direction then follows from where
/// they are. A node without neighbours keeps the direction that it was given; if its angle is
/// locked, dragging a handle leaves it.
///
/// In a layout file a mapping: `pos` always; `dir` unless it follows from neighbours; `left` and
/// `right`, the lengths of the handles, where there are handles; `locked`.
class ViewNode : public sigc::trackable {
 public:
  /// Which part of a node a tag stands for.
  enum Part { body = 0, left_handle = 1, right_handle = 2 };
  struct Tag : ViewTag {
    Tag(ViewNode* tagged, Part tagged_part);

    ViewNode* node;
    Part part;
  };

  static constexpr double shortest_handle = 4.0;
  /// From the node's place to the rim of its disc.
  static constexpr double reach = 4.75;

  ViewNode() = default;
  ViewNode(const ViewNode&) = delete;
  ViewNode& operator=(const ViewNode&) = delete;

  /// It has got another place.
  virtual void moved();
  virtual ~ViewNode();
  /// Takes its direction from its neighbours, if it has some.
  virtual void refresh();
  virtual void draw(const Cairo::RefPtr<Cairo::Context>& context) const;
  virtual void draw_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table);
  virtual void draw_left_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table);
  virtual void draw_right_tag(const Cairo::RefPtr<Cairo::Context>& context, SelectionTable& table);
  /// Moves a part of the node to a place.
  virtual void drag(Part part, const Vector& position);
  /// The direction of the track, seen together with what is joined on here.
  [[nodiscard]] virtual Vector get_path_direction() const { return dir; }
  /// Whether dragging a handle leaves the direction.
  [[nodiscard]] virtual bool is_locked() const;
  /// Only for a node without neighbours.
  virtual void set_locked(bool on);
  /// "Lock Angle", or null where that makes no sense. Managed.
  [[nodiscard]] virtual Gtk::MenuItem* get_menu_item();

  /// The owner, once. Throws std::logic_error "ViewLinkNode::set_object() called twice".
  void set_object(ViewObj* object);
  [[nodiscard]] ViewObj* get_object() const { return object_; }

  [[nodiscard]] ViewNode* get_left_node() const { return left_node_; }
  [[nodiscard]] ViewNode* get_right_node() const { return right_node_; }
  /// Neighbours are mutual: both ends learn of it, and former ones are let go. Null is none.
  void set_left_node(ViewNode* node);
  void set_right_node(ViewNode* node);
  [[nodiscard]] bool has_neighbour() const { return left_node_ || right_node_; }
  /// The start of a straight segment that ends here, where the start has another neighbour on that
  /// side; null for none. It gives the direction, as a neighbour would, when `refresh` is called.
  void set_lead(const ViewNode* start) { lead_ = start; }
  [[nodiscard]] const ViewNode* get_lead() const { return lead_; }
  /// Whether the node's own segments give its direction.
  [[nodiscard]] bool is_led() const { return has_neighbour() || lead_; }

  [[nodiscard]] Vector left_point() const { return pos - dir * left; }
  [[nodiscard]] Vector right_point() const { return pos + dir * right; }
  /// Makes the handle, of at least the shortest length.
  void set_left_handle(double length);
  void set_right_handle(double length);
  [[nodiscard]] double get_angle() const { return dir.get_angle(); }

  /// The handles that it has, dashed lines out to squares.
  void draw_handles(const Cairo::RefPtr<Cairo::Context>& context) const;

  virtual void load(const YAML::Node& node);
  void save(YAML::Emitter& out) const;

  // Owned by whoever drags; the rest follows by `moved` and `refresh`.
  Vector pos;
  Vector dir;       ///< of length 1, or zero until it is known
  double left = 0;  ///< length of the handle
  double right = 0;
  bool has_left = false;
  bool has_right = false;

 protected:
  /// Said before anything changes that its object's entry holds of it.
  void before_change() const;
  /// Gives it another direction, and has all drawn again that shows it.
  virtual void turn(const Vector& direction);
  [[nodiscard]] virtual std::shared_ptr<const ViewTag> make_tag(Part part);
  [[nodiscard]] virtual bool is_joined() const { return false; }
  /// Writes what a class adds to the mapping.
  virtual void save_more(YAML::Emitter& /*out*/) const {}
  /// The direction that neighbours or the lead give; zero without any.
  [[nodiscard]] Vector direction_of_neighbours() const;
  /// The menu item that locks its angle.
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
