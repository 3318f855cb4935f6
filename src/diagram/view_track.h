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

/// A stretch of track between two nodes of one object: straight, or bent by the handles that face
/// each other.
struct ViewSegment {
  ViewNode* start;
  ViewNode* end;
  bool* straight;  ///< the object's bit for it
};

/// A diagram object that stands for track: what all of them do with their nodes and segments.
class ViewTrack : public ViewObj {
 public:
  [[nodiscard]] PixelBox runtime_box(const Context& context) override;
  void draw_link_target_tags(const Context& context, SelectionTable& table,
                             const ViewLinkNode& dragged) override;
  void drag_move(const ViewTag& tag, const Vector& position) override;
  [[nodiscard]] std::vector<ViewObj*> dependants() override;
  [[nodiscard]] Vector anchor() override { return ends().front()->pos; }
  void align(double step) override;

  /// Its ends are free; the blocks stay joined.
  void on_leaving() override;
  void draw_glow(const Context& context) override;
  /// The ends of its track, where it can be joined.
  [[nodiscard]] virtual std::vector<ViewLinkNode*> ends() = 0;
  /// In an order that stays while no nodes come or go.
  [[nodiscard]] virtual std::vector<ViewSegment> segments() = 0;
  /// The stretches that a tag stands for; none for a node and for the whole.
  [[nodiscard]] virtual std::vector<ViewSegment> stretches_of(const ViewTag& tag);
  /// In the context's colour, upon the track.
  void stroke_stretches(const Context& context, const ViewTag& tag);
  /// "Straight Line": the two nodes become neighbours, where they have room for it.
  void make_straight(const ViewSegment& segment);
  /// "Curved Line": begins as straight, with handles of a third of the distance.
  void make_curved(const ViewSegment& segment);

 protected:
  [[nodiscard]] virtual std::vector<ViewNode*> inner_nodes() { return {}; }
  /// How its track runs; each from the left, or from the common end.
  [[nodiscard]] virtual std::vector<TrackPath> tracks() = 0;

  void draw_plain(const Context& context, bool selected) override;
  void move_by(const Vector& delta) override;
  [[nodiscard]] Vector get_place() override;
  void draw_handle_tags(const Context& context, bool selected, SelectionTable& table) override;
  void draw_link_tags(const Context& context, bool selected, SelectionTable& table) override;

  /// All at once, in the context's colour.
  static void stroke(const Context& context, std::vector<TrackPath> tracks, TrackPaths::Bed bed);
  /// The pixels of one segment.
  static void paint_segment(const Context& context, const ViewSegment& segment);
  /// A node with its owner, its kind and the link that it stands for.
  void set_up(ViewLinkNode& node, ViewLinkNode::Type type);
  /// Which segments of those read are straight follows from the handles that their nodes have.
  void find_straight_segments();
  /// Makes straight segments' nodes neighbours, and no others.
  virtual void join_neighbours();

  /// "Straight Line" and "Curved Line" for a segment.
  void add_shape_items(Gtk::Menu& menu, const ViewSegment& segment);
  /// "Disconnect" and "Lock Angle", where they make sense. True when there is one.
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

/// What a display shows of a block: green for a locomotive, yellow with sleepers for what is not
/// known, black for nothing.
struct Occupancy {
  Occupancy() = default;
  explicit Occupancy(const Block& block) : lok(block.get_lok()), occupied(block.occupied()) {}

  void set_colour(const Cairo::RefPtr<Cairo::Context>& context) const;
  [[nodiscard]] TrackPaths::Bed bed() const;
  bool operator==(const Occupancy&) const = default;

  Lok* lok = nullptr;
  bool occupied = false;
};

/// Reads the reference `key`, which must be there; calls `attach` with the object when the whole
/// file has been read, if there is one of that class.
template <typename T>
void load_shown(const YAML::Node& node, const char* key, const std::function<void(T&)>& attach) {
  const auto value = node[key];
  if (!value) throw YAML::TypedKeyNotFound<std::string>(node.Mark(), key);
  if (value.IsNull()) return;
  unsigned id = 0;
  value >> id;
  resolve_later(id, [attach](zemblar::Object* object) {
    auto* shown = dynamic_cast<T*>(object);
    if (shown) attach(*shown);
    return shown != nullptr;
  });
}
/// A node that must be there.
void load_node(const YAML::Node& node, const char* key, ViewNode& target);
void save_node(YAML::Emitter& out, const char* key, const ViewNode& node);

}  // namespace zemblar
