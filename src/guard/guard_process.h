#pragma once

#include <gio/gio.h>
#include <giomm/cancellable.h>
#include <sigc++/signal.h>

#include <string>
#include <utility>

#include "guard/guard_channel.h"
#include "guard/guard_message.h"

namespace zemblar {

/// The program's handle of the guard, a separate process in a session of its own. The guard notices
/// the end of the program because the channel between the two closes.
///
/// A crash of the program closes the channel at once, before the system writes a core file.
class GuardProcess {
 public:
  /// The guard's exit status after switching track power off.
  static constexpr int has_stopped = 3;

  /// Starts the guard from the file `program`. Throws Glib::Error, or std::system_error when no
  /// channel can be made.
  explicit GuardProcess(const std::string& program);
  /// Closes the channel. The guard treats this as a crash unless `take_leave` was called before.
  ~GuardProcess();
  GuardProcess(const GuardProcess&) = delete;
  GuardProcess& operator=(const GuardProcess&) = delete;

  /// The path of the guard that was installed, or built, with this program.
  [[nodiscard]] static std::string default_program();

  /// Sends a message, with the descriptor of a station's serial line. False when the guard cannot
  /// be reached.
  bool send(const guard::Message& message);
  /// Call when the user quits the program: the guard ends without stopping anything.
  void take_leave();

  /// Kills the guard, which then stops nothing.
  void kill() const;

  /// The guard has ended by itself, with this exit status; -1 if a signal ended it.
  sigc::signal<void, int>& signal_ended() { return signal_ended_; }

 private:
  explicit GuardProcess(std::pair<GuardChannel, GuardChannel> ends, const std::string& program);
  static void on_ended(GObject* source, GAsyncResult* result, gpointer guard);

  GuardChannel channel_;
  GSubprocess* process_;  // this object owns one reference
  Glib::RefPtr<Gio::Cancellable> waiting_ = Gio::Cancellable::create();
  sigc::signal<void, int> signal_ended_;
};

}  // namespace zemblar
