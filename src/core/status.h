#pragma once

#include <glibmm/ustring.h>
#include <sigc++/signal.h>

namespace zemblar {

/// The one status line that every window shows: what happened, to which object or file, and what
/// to do next. Setting the text that is already there announces it again.
void set_status(const Glib::ustring& message);
void clear_status();
[[nodiscard]] Glib::ustring get_status();

/// Emitted on each of the above. It can be used before `main`.
sigc::signal<void>& signal_status_changed();

}  // namespace zemblar
