#pragma once

#include <glibmm/ustring.h>
#include <sigc++/signal.h>

#include <chrono>
#include <deque>

namespace zemblar {

/// The one status line that every window shows: what happened, to which object or file, and what
/// to do next. Setting the text that is already there announces it again.
void set_status(const Glib::ustring& message);
/// Empties the line. A note that waits for it, or that another text has replaced, is shown then.
void clear_status();
[[nodiscard]] Glib::ustring get_status();

/// A text that was in the status line, and when it got there.
struct ToldStatus {
  unsigned long number;  ///< from 1, in the order in which they came
  std::chrono::system_clock::time_point time;
  Glib::ustring text;
};

/// The last texts of the line, the newest first. A text that comes again while it is the newest one
/// stays one entry, with the new time; one that another text replaces at once has none.
[[nodiscard]] const std::deque<ToldStatus>& status_history();
constexpr std::size_t status_history_length = 50;

/// Whether the line tells of a trouble that lasts. Any other text gets old.
[[nodiscard]] bool status_lasts();

/// The text with one sentence more; it may lack its full stop.
[[nodiscard]] Glib::ustring with_sentence(const Glib::ustring& text, const Glib::ustring& sentence);

/// Emitted on each of the above. It can be used before `main`.
sigc::signal<void>& signal_status_changed();

/// What one object has told of its present trouble: each message once, and none of it any longer
/// than it is true.
///
/// A note that another text has replaced is shown again when the line is free, as long as the
/// trouble lasts: of several troubles the newest stands in the line, and its end uncovers the one
/// before.
class StatusNote {
 public:
  StatusNote() = default;
  ~StatusNote() { take_back(); }
  StatusNote(const StatusNote&) = delete;
  StatusNote& operator=(const StatusNote&) = delete;

  /// Replaces what stands in the line. Nothing when that is what was told last.
  void tell(const Glib::ustring& message);
  /// The same, but a text of somebody else stays for as long as the line shows it.
  void offer(const Glib::ustring& message);
  /// The trouble is over. A message of somebody else stays in the line.
  void take_back();
  [[nodiscard]] bool is_told() const { return !told_.empty(); }

 private:
  friend void set_status(const Glib::ustring& message);
  friend void clear_status();

  static void put(const Glib::ustring& text, StatusNote* owner);
  bool learn(const Glib::ustring& message);
  void show();
  static StatusNote* newest_due();

  Glib::ustring told_;
  bool due_ = false;  // has not been shown yet, or was replaced while the trouble lasted
};

}  // namespace zemblar
