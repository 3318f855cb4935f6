#pragma once

namespace zemblar {

/// Drops presses of pointer buttons that lie outside the program's windows. Call once.
///
/// Such a press comes while another button is held down whose grab the program has ended. It means
/// nothing here, and GDK looks for a window under it that is not there.
void drop_stray_presses();

}  // namespace zemblar
