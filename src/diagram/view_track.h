#pragma once

#include <yaml-cpp/yaml.h>

#include <functional>

#include "core/yaml_io.h"
#include "diagram/view_link_node.h"
#include "diagram/view_menu.h"
#include "diagram/view_object.h"
#include "runtime/scoped_connection.h"
#include "track/block.h"

namespace zemblar {

/// A segment of track between two nodes of one object: straight, or a curve shaped by the right
/// handle of `start` and the left one of `end`.
struct ViewSegment {
  ViewNode* start;
  ViewNode* end;
  bool* straight;  ///< the flag in the object
};

/// The base of diagram objects that show track: their nodes and segments.
class ViewTrack : public ViewObj {
 public:
  [[nodiscard]] PixelBox runtime_box(const Context& context) override;
  void draw_link_target_tags(const Context& context, SelectionTable& table,
                             const ViewLinkNode& dragged) override;
  void drag_move(const ViewTag& tag, const Vector& position) override;
  [[nodiscard]] std::vector<ViewObj*> dependants() override;
  [[nodiscard]] Vector anchor() override { return ends().front()->pos; }
  void align(double step) override;

  /// Disconnects the nodes at the ends; the blocks stay joined.
  void on_leaving() override;
  void draw_glow(const Context& context) override;
  /// The nodes at the ends of the track, which can be joined.
  [[nodiscard]] virtual std::vector<ViewLinkNode*> ends() = 0;
  /// All segments, in an order that only adding or removing nodes changes.
  [[nodiscard]] virtual std::vector<ViewSegment> segments() = 0;
  /// The segments that a tag represents; empty for a node and for the whole object.
  [[nodiscard]] virtual std::vector<ViewSegment> stretches_of(const ViewTag& tag);
  /// Draws the segments of a tag in the context's colour, over the track.
  void stroke_stretches(const Context& context, const ViewTag& tag);
  /// "Straight Line": makes the segment straight. Its two nodes become neighbours if neither has
  /// one on that side.
  void make_straight(const ViewSegment& segment);
  /// "Curved Line": makes the segment a curve, which at first looks straight, with handles of a
  /// third of its length.
  void make_curved(const ViewSegment& segment);

 protected:
  [[nodiscard]] virtual std::vector<ViewNode*> inner_nodes() { return {}; }
  /// The tracks, each from the left or from the common end.
  [[nodiscard]] virtual std::vector<TrackPath> tracks() = 0;

  void draw_plain(const Context& context, bool selected) override;
  void move_by(const Vector& delta) override;
  [[nodiscard]] Vector get_place() override;
  void draw_handle_tags(const Context& context, bool selected, SelectionTable& table) override;
  void draw_link_tags(const Context& context, bool selected, SelectionTable& table) override;

  /// Draws the tracks together, in the context's colour.
  static void stroke(const Context& context, std::vector<TrackPath> tracks, TrackPaths::Bed bed);
  /// Paints the tag of one segment.
  static void paint_segment(const Context& context, const ViewSegment& segment);
  /// Sets the owner and the type of a node.
  void set_up(ViewLinkNode& node, ViewLinkNode::Type type);
  /// After reading, makes those segments straight whose nodes do not both have handles for them.
  void find_straight_segments();
  /// Makes the nodes of straight segments neighbours, and of no others.
  virtual void join_neighbours();

  /// Appends "Straight Line" and "Curved Line" for a segment.
  void add_shape_items(Gtk::Menu& menu, const ViewSegment& segment);
  /// Appends "Disconnect" and "Lock Angle" if they apply to the node. True if an item was added.
  bool add_node_items(Gtk::Menu& menu, ViewNode& node);

  [[nodiscard]] static TrackPath path_of(const std::vector<ViewSegment>& segments);
  [[nodiscard]] static TrackPath path_of(const ViewSegment& segment);

 private:
  void reshape_between(const ViewNode* start, const ViewNode* end,
                       void (ViewTrack::*reshape)(const ViewSegment&));
  void part_blocks_at(const ViewNode* node);
  static void level_direction(ViewNode& node);
  [[nodiscard]] bool uses_handle(const ViewNode* node, bool right);
};

/// The state of a block as a display shows it: green with a locomotive, yellow with sleepers if
/// occupied by something unknown, black if free.
struct Occupancy {
  Occupancy() = default;
  explicit Occupancy(const Block& block) : lok(block.get_lok()), occupied(block.occupied()) {}

  void set_colour(const Cairo::RefPtr<Cairo::Context>& context) const;
  [[nodiscard]] TrackPaths::Bed bed() const;
  bool operator==(const Occupancy&) const = default;

  Lok* lok = nullptr;
  bool occupied = false;
};

/// Reads the reference `key`, which must exist. When the whole file has been read, calls `attach`
/// with the object, if there is one of class T.
template <typename T>
void load_shown(const YAML::Node& node, const char* key, const std::function<void(T&)>& attach) {
  const auto value = node[key];
  if (!value) throw YAML::TypedKeyNotFound<std::string>(node.Mark(), key);
  if (value.IsNull()) return;
  resolve_later(value, [attach](zemblar::Object* object) {
    auto* shown = dynamic_cast<T*>(object);
    if (shown) attach(*shown);
    return shown != nullptr;
  });
}
/// Reads a node; its key must exist.
void load_node(const YAML::Node& node, const char* key, ViewNode& target);
void save_node(YAML::Emitter& out, const char* key, const ViewNode& node);

}  // namespace zemblar
