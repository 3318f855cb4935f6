#pragma once

#include <giomm/cancellable.h>

#include <deque>
#include <memory>

#include "core/direction.h"
#include "locomotives/script_overlay.h"
#include "runtime/scoped_connection.h"
#include "scripts/script_event.h"

namespace zemblar {

class Function;

/// The state of one run of a script, on the run's fiber.
///
/// The run is cancelled when the script ends and when its list of commands changes. The destructor
/// takes back all remaining levels of temporary changes, oldest first. When the script ends this
/// happens at once, since the layout may be destroyed before a waiting run continues.
///
/// `lok` is null when the locomotive has ended, although `instance` still has its address for
/// comparisons.
struct ScriptContext {
  ScriptContext(Script& script, const EventInstance& instance);
  ~ScriptContext();
  ScriptContext(const ScriptContext&) = delete;
  ScriptContext& operator=(const ScriptContext&) = delete;

  std::deque<std::unique_ptr<ScriptOverlay>> overlays;  ///< used as a stack
  Glib::RefPtr<Gio::Cancellable> cancellable;
  const EventInstance instance;
  Script* script;  ///< null when it has ended

  /// The locomotive of the instance; null when it has ended or there is none.
  [[nodiscard]] Lok* lok() const;
  [[nodiscard]] bool is_cancelled() const { return cancellable->is_cancelled(); }

  void push();
  /// Takes back the last level; does nothing without a level.
  void pop();

  // Change the last level; without a level, permanently.
  void set_speed(Lok& lok, unsigned speed);
  void set_direction(Lok& lok, Direction direction);
  /// With a level, a function of type Pulse pulses for either value of `state`.
  void set_state(Function& function, bool state);

 private:
  void take_all_back();

  Lok* lok_;
  ScopedConnection lok_deleted_;
  ScopedConnection script_deleted_;
  ScopedConnection commands_changed_;
};

}  // namespace zemblar
