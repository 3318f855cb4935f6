#pragma once

#include "diagram/view_track.h"
#include "track/point_base.h"

namespace zemblar {

/// The picture of a point or a scissor point, with a way for each of its states.
///
/// On the operating display the way of the current state is black, above the others in grey. A
/// click on another way sets its state.
class ViewSwitch : public ViewTrack {
 public:
  struct StateTag : ViewTag {
    StateTag(ViewObj* drawn, PointState* shown) : ViewTag(drawn), state(shown) {}

    PointState* state;
  };

  [[nodiscard]] zemblar::Object* get_object() const override { return point_; }
  void draw_runtime_tags(const Context& context, SelectionTable& table) override;
  void click(const ViewTag& tag, bool insists) override;
  void show_menu(const ViewTag& tag, guint32 time) override;
  [[nodiscard]] std::vector<ViewSegment> segments() override;
  [[nodiscard]] std::vector<ViewSegment> stretches_of(const ViewTag& tag) override;

 protected:
  struct Way {
    PointState* state;
    ViewSegment segment;
  };
  /// The ways that are drawn.
  [[nodiscard]] virtual std::vector<Way> ways() = 0;

  /// Watches the state and the end of the point.
  void attach(PointBase& point);
  [[nodiscard]] std::vector<TrackPath> tracks() override;
  void draw_body_tags(const Context& context, bool selected, SelectionTable& table) override;
  void draw_live(const Context& context) override;

 private:
  PointBase* point_ = nullptr;
  ScopedConnection state_changed_;
  ScopedConnection state_removed_;
};

}  // namespace zemblar
