#pragma once

namespace zemblar {

/// Takes all input back from a menu that is not on the screen. To be called before each event.
///
/// A menu cannot be shown while another program holds the pointer, a window manager for example
/// while a window is moved. The toolkit's text fields select an entry of it nevertheless, and with
/// that the menu gets all input, for good.
/// Assistive technology can open a submenu whose parent is not on the screen, which then cannot
/// serve the events that the submenu hands on.
void release_hidden_menu();

}  // namespace zemblar
