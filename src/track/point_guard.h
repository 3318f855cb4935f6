#pragma once

#include <glibmm/ustring.h>

namespace zemblar {

class PointBase;
class PointState;

/// The protection of points under trains, which the program's options switch on: a point that is
/// thrown under a train derails it. It holds for people and scripts, not for undo and reading.
///
/// A point is protected while it is occupied, and while a locomotive holds it. A reserved point is
/// not, until its train reaches it: its way is chosen meanwhile. No train can be on a signal.

/// A sentence why the point is protected now; empty if it is not.
[[nodiscard]] Glib::ustring why_protected(const PointBase& point);
/// For clicks, keys and panels. If the point is protected, the status line says so instead;
/// `insists` sets it all the same.
void set_by_hand(PointBase& point, PointState& state, bool insists);
/// True if a script may set the point now; else the status line says why not.
[[nodiscard]] bool lets_script_set(const PointBase& point, const PointState& state);

}  // namespace zemblar
