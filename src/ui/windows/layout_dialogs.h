#pragma once

#include <string>

namespace zemblar {

/// Sets Layout::dialogs: the file choosers "Open" and "Save As", and `finish_edits`.
void install_layout_dialogs();

/// Opens a file as if it had been chosen in the dialog "Open".
void open_as_chosen(const std::string& path);

/// Closes every open dialog, so that its nested main loop ends.
void close_dialogs();

}  // namespace zemblar
