#pragma once

namespace zemblar {

/// Makes the program's icons available by name, even if the program is not installed: icons missing
/// from the icon theme are rendered from compiled-in artwork.
void add_builtin_icons();

}  // namespace zemblar
