#pragma once

#include <giomm/cancellable.h>

#include <deque>
#include <memory>

#include "core/direction.h"
#include "locomotives/script_overlay.h"
#include "runtime/scoped_connection.h"
#include "scripts/script_event.h"
#include "track/point_overlay.h"
#include "track/reservation.h"

namespace zemblar {

class Block;
class Function;
class PointBase;
class PointState;

/// The state of one run of a script, on the run's fiber.
///
/// The run is cancelled when the script ends and when its list of commands changes. The destructor
/// takes back all remaining levels of temporary changes, oldest first, and ends what the run has
/// reserved. When the script ends this
/// happens at once, since the layout may be destroyed before a waiting run continues.
///
/// In a run that lasts as long as its condition, what is reserved ends with the condition, whatever
/// command the run is at.
///
/// `lok` and `block` are null when the object has ended, although `instance` still has its address
/// for comparisons.
struct ScriptContext {
  ScriptContext(Script& script, const EventInstance& instance);
  ~ScriptContext();
  ScriptContext(const ScriptContext&) = delete;
  ScriptContext& operator=(const ScriptContext&) = delete;

  std::deque<std::unique_ptr<ScriptOverlay>> overlays;       ///< used as a stack
  std::deque<std::unique_ptr<PointOverlay>> point_overlays;  ///< one for each of `overlays`
  Glib::RefPtr<Gio::Cancellable> cancellable;
  const EventInstance instance;
  Script* script;  ///< null when it has ended

  /// The locomotive of the instance; null when it has ended or there is none.
  [[nodiscard]] Lok* lok() const;
  [[nodiscard]] bool is_cancelled() const { return cancellable->is_cancelled(); }

  /// Call at the beginning of a run that lasts as long as its instance.
  void follow_instance();
  /// True if the instance has finished in such a run. No command needs to wait any more.
  [[nodiscard]] bool is_over() const { return is_over_; }
  sigc::signal<void>& signal_over() { return signal_over_; }

  void push();
  /// Takes back the last level; does nothing without a level.
  void pop();

  // Change the last level; without a level, permanently.
  void set_speed(Lok& lok, unsigned speed);
  void set_direction(Lok& lok, Direction direction);
  /// With a level, a function of type Pulse pulses for either value of `state`.
  void set_state(Function& function, bool state);
  void set_point(PointBase& point, PointState& state);

  /// Reserves a block until the run ends or releases it; see Reservation.
  Reservation& reserve(Block& block, Lok& lok);
  /// Ends the reservations of this run for the block.
  void release(const Block& block);

  /// The block of the instance; null when it has ended or there is none.
  [[nodiscard]] Block* block() const;
  /// Ends the run after the present command, and says why in the status line.
  void give_up(const Glib::ustring& why);

 private:
  void take_all_back();
  void end_reservations();

  std::deque<std::unique_ptr<Reservation>> reservations_;
  Block* block_;
  Lok* lok_;
  ScopedConnection block_deleted_;
  ScopedConnection lok_deleted_;
  ScopedConnection script_deleted_;
  ScopedConnection commands_changed_;
  ScopedConnection instance_finished_;
  bool is_over_ = false;
  sigc::signal<void> signal_over_;
};

}  // namespace zemblar
