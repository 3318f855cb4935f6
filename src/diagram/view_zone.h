#pragma once

#include <deque>
#include <memory>

#include "diagram/view_track.h"
#include "track/zone.h"

namespace zemblar {

class Lok;

/// The picture of a zone: a track from its left end through any number of nodes to its right end.
///
/// On the operating display it is green with an arrow while a locomotive is in the zone, yellow
/// while something unknown occupies it, and black while it is free. The arrow shows the direction
/// of travel, if known.
///
/// In a layout file: `zone`, `left`, `right` and `nodes`. Which segments are straight follows from
/// the handles of their nodes.
class ViewZone : public ViewTrack {
 public:
  /// Counted from the left end.
  struct SegmentTag : ViewTagInt {
    using ViewTagInt::ViewTagInt;
  };

  /// A new straight one around a place.
  ViewZone(Zone& zone, const Vector& place);
  explicit ViewZone(const YAML::Node& node);

  /// Asserts that there is a zone.
  void save(YAML::Emitter& out) const override;
  [[nodiscard]] zemblar::Object* get_object() const override { return zone_; }
  [[nodiscard]] ViewLinkNode* get_link_node(const std::string& name) override;
  void show_menu(const ViewTag& tag, guint32 time) override;

  [[nodiscard]] std::vector<ViewSegment> segments() override;
  /// Adds a node to a segment, at the point nearest to `place`, or in the middle.
  void add_node(unsigned segment, const std::optional<Vector>& place = {});
  /// Deletes an inner node and joins its two segments.
  void delete_node(unsigned index);

 protected:
  [[nodiscard]] std::vector<ViewLinkNode*> ends() override { return {&left_, &right_}; }
  [[nodiscard]] std::vector<ViewNode*> inner_nodes() override;
  [[nodiscard]] std::vector<TrackPath> tracks() override { return {path_of(segments())}; }
  void draw_body_tags(const Context& context, bool selected, SelectionTable& table) override;
  void draw_live(const Context& context) override;

 private:
  /// The state that the operating display shows.
  struct Live {
    Occupancy occupancy;
    int heading = 0;  // 1 to the right, -1 to the left, 0 unknown

    bool operator==(const Live&) const = default;
  };

  ViewZone();
  void attach(Zone& zone);
  void follow();
  void follow_lok(Lok* lok);
  [[nodiscard]] Live live() const;
  void draw_arrow(const Context& context);

  Zone* zone_ = nullptr;
  ViewLinkNode left_;
  ViewLinkNode right_;
  std::vector<std::unique_ptr<ViewNode>> inner_;
  std::deque<bool> straight_ = {true};  // one for each segment
  Live shown_;
  std::vector<ScopedConnection> followed_;
  ScopedConnection place_changed_;
};

}  // namespace zemblar
