#pragma once

#include <sigc++/trackable.h>

#include <map>
#include <memory>
#include <string>

#include "core/status.h"
#include "guard/guard_process.h"
#include "runtime/scoped_connection.h"
#include "runtime/timer.h"

namespace zemblar {

class Device;

/// Sends the guard (see GuardProcess) the stop order of every command station of the current layout
/// that has been in service. Four times a second it also sends a sign of life of this thread, with
/// whether any locomotive moves.
///
/// The guard is started when the first station comes into service, and again when it has ended by
/// itself. Without stations there is no guard. The status line shows when the guard cannot run, and
/// when it has acted.
class TrainGuard : public sigc::trackable {
 public:
  explicit TrainGuard(std::string program = GuardProcess::default_program());

  /// Call when the user quits the program: the guard stops no trains.
  void take_leave();

 private:
  using Stations = std::map<const Device*, guard::Station>;

  void watch(Device& device);
  void follow();
  void start_heartbeat();
  bool start();
  void report_missing(const Glib::ustring& why);
  void follow_power();
  void end_process();
  void on_ended(int status);
  void update(const Stations& stations);
  void send(const guard::Message& message);
  static Stations find_stations();

  std::string program_;
  std::unique_ptr<GuardProcess> process_;
  bool has_ended_ = false;  // the guard has ended; `process_` is reset at the next heartbeat
  Stations sent_;
  std::map<const Device*, ScopedConnection> watched_;  // keys may be of destroyed devices
  Timeout heartbeat_;
  Clock::time_point started_{};
  Clock::time_point ended_{};
  StatusNote missing_;
  StatusNote stopped_;  // shown until the track power is on again
};

}  // namespace zemblar
