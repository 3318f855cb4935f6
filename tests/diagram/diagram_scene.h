#pragma once

#include <string>

#include "diagram/view.h"
#include "diagram/view_crossing.h"
#include "diagram/view_label.h"
#include "diagram/view_point.h"
#include "diagram/view_scissor.h"
#include "diagram/view_signal.h"
#include "diagram/view_zone.h"
#include "locomotives/lok.h"
#include "tests/support/small_railway.h"

namespace zemblar::test {

/// A small railway and a view that shows of it what a test asks for.
class DiagramScene : public SmallRailway {
 protected:
  template <typename T, typename Shown>
  T* show(Shown& shown, const Vector& place) {
    auto* object = new T(shown, place);
    view->add_object(object);
    return object;
  }
  ViewZone* show_zone(const char* name, const Vector& place) {
    return show<ViewZone>(*zone(name, false), place);
  }
  ViewPoint* show_point(const Vector& place) { return show<ViewPoint>(*point(), place); }
  static Point* point() { return layout().get_points().add(new Point); }
  static Scissor* scissor() { return layout().get_points().add(new Scissor); }
  static Signal* signal() { return layout().get_points().add(new Signal); }
  static Crossing* crossing() { return layout().get_blocks().add(new Crossing); }
  static ViewLinkNode& end(ViewObj& object, const std::string& name) {
    return *object.get_link_node(name);
  }

  View* view = layout().get_views().add(new View);
};

}  // namespace zemblar::test
