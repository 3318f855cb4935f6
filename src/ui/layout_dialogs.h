#pragma once

namespace zemblar {

/// Gives the layout its two file choosers, "Open" and "Save As".
void install_layout_dialogs();

/// Answers every open dialog as if it had been closed, so that its nested loop ends.
void close_dialogs();

}  // namespace zemblar
