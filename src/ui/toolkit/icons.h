#pragma once

namespace zemblar {

/// Lets the toolkit find the program's icons by their names, also when the program has not been
/// installed: those that the icon theme lacks are rendered from the artwork compiled in.
void add_builtin_icons();

}  // namespace zemblar
