#pragma once

#include <glibmm/ustring.h>

#include <vector>

#include "diagram/view.h"

namespace zemblar {

/// The points, scissor points and signals of a view that can be clicked on the operating display,
/// in reading order: rows from the top, each from the left. A row is about as high as a point.
[[nodiscard]] std::vector<ViewObj*> switches_of(const View& view);

/// Clicks a switch: a signal or a point gets the state after its current one, and after the last
/// one the first. See ViewObj::click.
void click_next(ViewObj& drawn, bool insists);

/// The name and the current state, such as "Point 3: Curved".
[[nodiscard]] Glib::ustring describe_switch(const ViewObj& drawn);

}  // namespace zemblar
