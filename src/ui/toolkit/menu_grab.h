#pragma once

namespace zemblar {

/// Removes the input grab of a menu that is not on the screen. Call before each event.
///
/// A menu cannot be shown while another program has grabbed the pointer, for example a window
/// manager that is moving a window. The toolkit's text fields select an item of such a menu
/// nevertheless, which gives the hidden menu all input permanently. Also, assistive technology can
/// open a submenu whose parent is not on the screen, and the parent cannot handle the events that
/// the submenu passes on.
void release_hidden_menu();

}  // namespace zemblar
