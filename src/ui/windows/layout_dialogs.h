#pragma once

#include <string>

namespace zemblar {

/// Gives the layout its two file choosers, "Open" and "Save As".
void install_layout_dialogs();

/// Opens that file as if it had been chosen in the dialog "Open".
void open_as_chosen(const std::string& path);

/// Answers every open dialog as if it had been closed, so that its nested loop ends.
void close_dialogs();

}  // namespace zemblar
