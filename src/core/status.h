#pragma once

#include <glibmm/ustring.h>
#include <sigc++/signal.h>

#include <chrono>
#include <deque>

namespace zemblar {

/// Sets the text of the one status line, which every window shows: what happened, to which object
/// or file, and what to do next. Setting the present text emits the signal again.
void set_status(const Glib::ustring& message);
/// Empties the line. A waiting StatusNote, or one that another text has replaced, is shown then.
void clear_status();
[[nodiscard]] Glib::ustring get_status();

/// An entry of the history: a text of the status line, and when it was set.
struct ToldStatus {
  unsigned long number;  ///< counts all entries from 1, in order of time
  std::chrono::system_clock::time_point time;
  Glib::ustring text;
};

/// The last texts of the line, the newest first. Repeating the newest text only updates its time. A
/// text that was replaced before anybody could read it has no entry.
[[nodiscard]] const std::deque<ToldStatus>& status_history();
constexpr std::size_t status_history_length = 50;

/// True if the line shows a StatusNote, a trouble that lasts; any other text may be cleared after a
/// while.
[[nodiscard]] bool status_lasts();

/// Appends a sentence to the text, adding a full stop to the text if it has none.
[[nodiscard]] Glib::ustring with_sentence(const Glib::ustring& text, const Glib::ustring& sentence);

/// Emitted when the status line is set or cleared. May be connected before `main`.
sigc::signal<void>& signal_status_changed();

/// An object's message about a lasting trouble. Each message is announced once, and goes when the
/// trouble is over.
///
/// A note that another text has replaced is shown again when the line is free, as long as the
/// trouble lasts. Among several troubles the newest is shown; when it is over, the one before is
/// shown again.
class StatusNote {
 public:
  StatusNote() = default;
  ~StatusNote() { clear(); }
  StatusNote(const StatusNote&) = delete;
  StatusNote& operator=(const StatusNote&) = delete;

  /// Puts the message in the status line. Does nothing when this note's last message was the same.
  void show(const Glib::ustring& message);
  /// The same, but waits while the line shows a text that is not of this note.
  void show_when_free(const Glib::ustring& message);
  /// Call when the trouble is over. Clears the line if it shows this note.
  void clear();
  [[nodiscard]] bool is_active() const { return !message_.empty(); }

 private:
  friend void set_status(const Glib::ustring& message);
  friend void clear_status();

  static void put(const Glib::ustring& text, StatusNote* owner);
  bool store(const Glib::ustring& message);
  void show();
  static StatusNote* newest_due();

  Glib::ustring message_;
  bool due_ = false;  // not shown yet, or replaced by another text while the trouble lasted
};

}  // namespace zemblar
