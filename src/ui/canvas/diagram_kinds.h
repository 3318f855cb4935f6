#pragma once

#include "ui/canvas/editor_tools.h"
#include "ui/toolkit/object_menu.h"

namespace zemblar {

class ViewObj;

// What the editor's tools make.

/// A new object of the current layout, to be shown by that kind of diagram object.
Object& make_object(DiagramKind kind);
/// A diagram object for it, at the origin; the caller puts it into a view.
[[nodiscard]] ViewObj* draw_object(DiagramKind kind, Object& object);
/// The objects of the layout that that kind can show.
[[nodiscard]] ObjectChoices choices_for(DiagramKind kind);

}  // namespace zemblar
