#include "core/status.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "core/i18n.h"
#include "runtime/timer.h"

namespace zemblar {
namespace {

constexpr std::chrono::milliseconds readable_time(200);

/// Never destroyed, because static objects may have notes.
struct Line {
  Glib::ustring text{};
  StatusNote* shown = nullptr;       // the note that the line shows, or null
  std::vector<StatusNote*> notes{};  // notes with a trouble, the oldest first
  struct Past {
    std::deque<ToldStatus> history{};  // the newest first
    unsigned long told = 0;            // number of all entries so far
    Clock::time_point entered{};       // when the newest entry was made
    bool is_trouble = false;           // whether the newest entry is of a note
  } past{};
};

Line& line() {
  static auto* the_line = new Line;
  return *the_line;
}

/// A text that was shown too shortly to be read gets no entry of its own, unless it is a note's:
/// the parts of one action often replace each other.
void enter_into_history(const Glib::ustring& text, bool of_trouble) {
  if (text.empty()) return;
  auto& [history, told, entered, is_trouble] = line().past;
  const auto now = std::chrono::system_clock::now();
  const bool is_known = !history.empty() && history.front().text.raw() == text.raw();
  const bool was_unseen = !history.empty() && !is_trouble && Clock::now() - entered < readable_time;
  if (is_known || was_unseen) {
    history.front() = {told, now, text};
  } else {
    history.push_front({++told, now, text});
  }
  if (!is_known) entered = Clock::now();
  is_trouble = of_trouble;
  if (history.size() > status_history_length) history.pop_back();
}

}  // namespace

const std::deque<ToldStatus>& status_history() {
  return line().past.history;
}

bool status_lasts() {
  return line().shown != nullptr;
}

sigc::signal<void>& signal_status_changed() {
  static sigc::signal<void> signal;
  return signal;
}

void set_status(const Glib::ustring& message) {
  StatusNote::put(message, nullptr);
}

void clear_status() {
  line().shown = nullptr;
  if (auto* next = StatusNote::newest_due()) return next->show();
  set_status({});
}

Glib::ustring get_status() {
  return line().text;
}

Glib::ustring with_sentence(const Glib::ustring& text, const Glib::ustring& sentence) {
  return text + (text.raw().ends_with('.') ? " " : ". ") + sentence;
}

/// `owner` is the note that has the text, or null. A library's message may quote half a UTF-8
/// character of a damaged file, which would make the toolkit abort.
void StatusNote::put(const Glib::ustring& text, StatusNote* owner) {
  auto* replaced = std::exchange(line().shown, owner);
  if (replaced && replaced != owner) replaced->due_ = true;
  line().text = readable(text.raw());
  enter_into_history(line().text, owner != nullptr);
  signal_status_changed().emit();
}

StatusNote* StatusNote::newest_due() {
  const auto& notes = line().notes;
  const auto is_due = [](const StatusNote* note) { return note->due_; };
  const auto found = std::find_if(notes.rbegin(), notes.rend(), is_due);
  return found == notes.rend() ? nullptr : *found;
}

/// Stores the message. False when it is the stored one already.
bool StatusNote::store(const Glib::ustring& message) {
  if (message_.raw() == message.raw()) return false;
  message_ = message;
  std::erase(line().notes, this);
  line().notes.push_back(this);
  return true;
}

void StatusNote::show() {
  due_ = false;
  put(message_, this);
}

void StatusNote::show(const Glib::ustring& message) {
  if (store(message)) show();
}

void StatusNote::show_when_free(const Glib::ustring& message) {
  if (!store(message)) return;
  if (line().text.empty() || line().shown == this) return show();
  due_ = true;
}

void StatusNote::clear() {
  if (message_.empty()) return;
  message_.clear();
  due_ = false;
  std::erase(line().notes, this);
  if (line().shown == this) clear_status();
}

}  // namespace zemblar
