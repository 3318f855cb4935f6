#pragma once

#include <glibmm/ustring.h>

#include <vector>

#include "diagram/view.h"

namespace zemblar {

/// The points, scissor points and signals of a view that can be clicked on the operating display,
/// row by row from the top, each from the left. A row is about as high as a point.
[[nodiscard]] std::vector<ViewObj*> switches_of(const View& view);

/// As a click of the pointer: a signal takes its next state, a point the one behind its current
/// one, and after the last the first.
void click_next(ViewObj& drawn);

/// The name and the current state, as "Point 3: Curved".
[[nodiscard]] Glib::ustring describe_switch(const ViewObj& drawn);

}  // namespace zemblar
