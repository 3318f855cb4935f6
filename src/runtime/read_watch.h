#pragma once

#include <giomm/cancellable.h>
#include <glib.h>

#include "runtime/scoped_connection.h"

namespace zemblar {

class fiber;

/// Lets a fiber wait until a file descriptor can be read.
///
///     while (!read_without_waiting(...)) watch.wait(cancel);
///
/// The main loop polls the descriptor continuously, so a wait costs no system call besides the
/// loop's own poll. The toolkit's streams wake the loop half a dozen times for each read that has
/// to wait.
///
/// For one reader at a time. Does not own the descriptor, which may be closed while it is watched.
class ReadWatch {
 public:
  explicit ReadWatch(int descriptor);
  ReadWatch(const ReadWatch&) = delete;
  ReadWatch& operator=(const ReadWatch&) = delete;
  /// No fiber may be waiting.
  ~ReadWatch();

  [[nodiscard]] bool is_waiting() const { return reader_ != nullptr; }
  /// Suspends the running fiber until there is something to read, the stream has failed or ended,
  /// `cancel` is cancelled, or `end` is called. May also return without a reason. The fiber
  /// continues from a later iteration of the main loop.
  void wait(const Glib::RefPtr<Gio::Cancellable>& cancel);
  /// Stops watching: ends a present wait, and later ones at once.
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
  gpointer polled_ = nullptr;  // GLib's tag of the descriptor; null when not polled
  int descriptor_;             // negative after `end`
  fiber* reader_ = nullptr;
  Glib::RefPtr<Gio::Cancellable> cancel_;  // argument of the last wait
  ScopedConnection on_cancel_;
  ScopedConnection waking_;
};

}  // namespace zemblar
