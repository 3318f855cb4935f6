#pragma once

#include "diagram/view_corners.h"
#include "track/crossing.h"

namespace zemblar {

/// The picture of a crossing: two tracks between opposite corners, in the colours of a zone.
///
/// In a layout file: `crossing` and the four corners. Which tracks are straight follows from the
/// handles of their nodes.
class ViewCrossing : public ViewTrack {
 public:
  /// One of the two tracks: 0 from the top left, 1 from the bottom left.
  struct SegmentTag : ViewTagInt {
    using ViewTagInt::ViewTagInt;
  };

  /// A new one around a place.
  ViewCrossing(Crossing& crossing, const Vector& place);
  explicit ViewCrossing(const YAML::Node& node);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] zemblar::Object* get_object() const override { return crossing_; }
  [[nodiscard]] ViewLinkNode* get_link_node(const std::string& name) override {
    return corners_.find(name);
  }
  void show_menu(const ViewTag& tag, guint32 time) override;

  [[nodiscard]] std::vector<ViewSegment> segments() override;

 protected:
  [[nodiscard]] std::vector<ViewLinkNode*> ends() override { return corners_.all(); }
  [[nodiscard]] std::vector<TrackPath> tracks() override;
  void draw_body_tags(const Context& context, bool selected, SelectionTable& table) override;
  void draw_live(const Context& context) override;

 private:
  ViewCrossing();
  void attach(Crossing& crossing);
  void follow();

  Crossing* crossing_ = nullptr;
  ViewCorners corners_;
  std::array<bool, 2> straight_ = {true, true};
  Occupancy shown_;
  std::vector<ScopedConnection> followed_;
};

}  // namespace zemblar
