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
/// It is cancelled when the script ends and when its list of commands changes. Levels of temporary
/// changes that are left are taken back at its end, oldest first; when the script ends that is done
/// at once, since the layout may be gone before a waiting run goes on.
///
/// Objects that end under a run are let go of: `lok` is null then, although `instance` still names
/// it to compare with.
struct ScriptContext {
  ScriptContext(Script& script, const EventInstance& instance);
  ~ScriptContext();
  ScriptContext(const ScriptContext&) = delete;
  ScriptContext& operator=(const ScriptContext&) = delete;

  std::deque<std::unique_ptr<ScriptOverlay>> overlays;  ///< used as a stack
  Glib::RefPtr<Gio::Cancellable> cancellable;
  const EventInstance instance;
  Script* script;  ///< null when it has ended

  /// The locomotive of the instance while it lives.
  [[nodiscard]] Lok* lok() const;
  [[nodiscard]] bool is_cancelled() const { return cancellable->is_cancelled(); }

  void push();
  /// Takes the last level back; nothing when there is none.
  void pop();

  // Into the last level; for good when there is none.
  void set_speed(Lok& lok, unsigned speed);
  void set_direction(Lok& lok, Direction direction);
  /// A function of type Pulse pulses whatever the state, where there is a level.
  void set_state(Function& function, bool state);

 private:
  void take_all_back();

  Lok* lok_;
  ScopedConnection lok_deleted_;
  ScopedConnection script_deleted_;
  ScopedConnection commands_changed_;
};

}  // namespace zemblar
