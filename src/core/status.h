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

/// What one object has told of its present trouble: each message once, and none of it any longer
/// than it is true.
class StatusNote {
 public:
  StatusNote() = default;
  ~StatusNote() { take_back(); }
  StatusNote(const StatusNote&) = delete;
  StatusNote& operator=(const StatusNote&) = delete;

  /// Nothing when that is what was told last.
  void tell(const Glib::ustring& message);
  /// The trouble is over. A message of somebody else stays in the line.
  void take_back();
  [[nodiscard]] bool is_told() const { return !told_.empty(); }

 private:
  Glib::ustring told_;
};

}  // namespace zemblar
