#pragma once

#include <giomm/cancellable.h>
#include <glib.h>

#include "runtime/scoped_connection.h"

namespace zemblar {

class fiber;

/// Tells a fiber when a file descriptor can be read.
///
///     while (!read_without_waiting(...)) watch.wait(cancel);
///
/// The main loop keeps the descriptor among those that it polls from one wait to the next: a wait
/// costs no system call besides the loop's own poll. The toolkit's streams wake the loop half a
/// dozen times for each read that has to wait.
///
/// For one reader at a time. Does not own the descriptor, which may be closed while it is watched.
class ReadWatch {
 public:
  explicit ReadWatch(int descriptor);
  ReadWatch(const ReadWatch&) = delete;
  ReadWatch& operator=(const ReadWatch&) = delete;
  /// Nobody may wait any more.
  ~ReadWatch();

  [[nodiscard]] bool is_waiting() const { return reader_ != nullptr; }
  /// Suspends the running fiber until there is something to read, or an error or the end of the
  /// stream to be told, or the cancellable is cancelled, or `end` is called; possibly without any
  /// of them. The fiber goes on from a later turn of the main loop.
  void wait(const Glib::RefPtr<Gio::Cancellable>& cancel);
  /// Watches no longer: every wait, also one under way, ends.
  void end();

 private:
  struct Source;

  static gboolean prepare(GSource* source, gint* timeout);
  static gboolean check(GSource* source);
  static gboolean dispatch(GSource* source, GSourceFunc call, gpointer data);

  void poll(bool on);
  void follow(const Glib::RefPtr<Gio::Cancellable>& cancel);
  void wake_soon();
  void wake();

  GSource* source_;
  gpointer polled_ = nullptr;  // the descriptor's tag; null when it is not polled
  int descriptor_;             // negative when ended
  fiber* reader_ = nullptr;
  Glib::RefPtr<Gio::Cancellable> cancel_;  // of the last wait
  ScopedConnection on_cancel_;
  ScopedConnection waking_;
};

}  // namespace zemblar
