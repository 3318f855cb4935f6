#pragma once

#include <gio/gio.h>
#include <giomm/cancellable.h>
#include <sigc++/signal.h>

#include <string>
#include <utility>

#include "guard/guard_channel.h"
#include "guard/guard_message.h"

namespace zemblar {

/// The guard as the program sees it: a process of its own in a session of its own, which learns of
/// the program's end by the end of the channel between them.
///
/// A crash of the program closes the channel at once, before the system writes a core file.
class GuardProcess {
 public:
  /// The guard's exit status when it has switched the track power off.
  static constexpr int has_stopped = 3;

  /// Starts the guard from that file. Throws Glib::Error, and std::system_error without
  /// descriptors.
  explicit GuardProcess(const std::string& program);
  /// The guard takes it for a crash unless `take_leave` came before.
  ~GuardProcess();
  GuardProcess(const GuardProcess&) = delete;
  GuardProcess& operator=(const GuardProcess&) = delete;

  /// The guard that was installed, or built, with this program.
  [[nodiscard]] static std::string default_program();

  /// A station's line goes with it. False when the guard does not listen any more.
  bool tell(const guard::Message& message);
  /// The program ends as the person wants it to: the guard ends too and does nothing.
  void take_leave();

  /// Ends the guard, which does nothing.
  void kill() const;

  /// The guard has ended by itself, with that exit status; -1 for a signal.
  sigc::signal<void, int>& signal_ended() { return signal_ended_; }

 private:
  explicit GuardProcess(std::pair<GuardChannel, GuardChannel> ends, const std::string& program);
  static void on_ended(GObject* source, GAsyncResult* result, gpointer guard);

  GuardChannel channel_;
  GSubprocess* process_;  // one reference is this object's
  Glib::RefPtr<Gio::Cancellable> waiting_ = Gio::Cancellable::create();
  sigc::signal<void, int> signal_ended_;
};

}  // namespace zemblar
