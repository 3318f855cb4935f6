#pragma once

#include "ui/canvas/editor_tools.h"
#include "ui/toolkit/object_menu.h"

namespace zemblar {

class ViewObj;

// Objects made by the editor's tools.

/// Makes a new object in the current layout, of the class that this kind of diagram object shows.
Object& make_object(DiagramKind kind);
/// Makes a diagram object for an object, at the origin; the caller puts it into a view.
[[nodiscard]] ViewObj* draw_object(DiagramKind kind, Object& object);
/// The objects of the layout that this kind can show.
[[nodiscard]] ObjectChoices choices_for(DiagramKind kind);

}  // namespace zemblar
