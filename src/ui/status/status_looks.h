#pragma once

#include <vector>

#include "ui/status/status_mark.h"

namespace zemblar {

class Device;
class Lok;

// The looks of the marks in the status bar for the current layout: a shape, a word or two, and a
// sentence.

[[nodiscard]] StatusMark::Look power_look();
[[nodiscard]] StatusMark::Look device_look(const Device& device);
[[nodiscard]] StatusMark::Look held_look(const std::vector<Lok*>& held);
[[nodiscard]] StatusMark::Look unplaced_look(const std::vector<Lok*>& unplaced);
/// Shows the file's name, and whether the document has unsaved changes.
[[nodiscard]] StatusMark::Look file_look();

}  // namespace zemblar
