#pragma once

namespace Gtk {
class Window;
}

namespace zemblar {

/// Ctrl+W hides the window, in every keyboard layout.
void close_by_key(Gtk::Window& window);

}  // namespace zemblar
