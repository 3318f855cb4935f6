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

/// Keeps the guard (see GuardProcess) informed: of every command station of the current layout
/// that has been in service, and four times a second that this thread is at work, and whether any
/// locomotive drives.
///
/// The guard is started when the first station comes into service, and again when it has ended by
/// itself. Without stations nothing runs. What the guard cannot do, and what it has done, stands in
/// the status line.
class TrainGuard : public sigc::trackable {
 public:
  explicit TrainGuard(std::string program = GuardProcess::default_program());

  /// The program ends as the person wants it to: the guard lets the trains be.
  void take_leave();

 private:
  using Stations = std::map<const Device*, guard::Station>;

  void watch(Device& device);
  void follow();
  void begin_to_beat();
  bool start();
  void tell_missing(const Glib::ustring& why);
  void follow_power();
  void end_process();
  void on_ended(int status);
  void update(const Stations& stations);
  void tell(const guard::Message& message);
  static Stations find_stations();

  std::string program_;
  std::unique_ptr<GuardProcess> process_;
  bool has_ended_ = false;  // the process; it is dropped with the next beat
  Stations told_;
  std::map<const Device*, ScopedConnection> watched_;  // devices that may be gone meanwhile
  Timeout heart_;
  Clock::time_point began_{};
  Clock::time_point ended_{};
  StatusNote missing_;
  StatusNote stopped_;  // until the track power is on again
};

}  // namespace zemblar
