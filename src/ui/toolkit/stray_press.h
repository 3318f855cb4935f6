#pragma once

namespace zemblar {

/// Installs a filter that drops presses of mouse buttons outside the program's windows. Call once.
///
/// Such a press occurs while another button is held down whose grab the program has ended. It has
/// no meaning for the program, and GDK would look for a window of the program under the pointer,
/// where there is none.
void drop_stray_presses();

}  // namespace zemblar
