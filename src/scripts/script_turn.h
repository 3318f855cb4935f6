#pragma once

namespace zemblar {

/// Exists while a script evaluates its conditions, or a run that has waited continues.
///
/// What a script changes meanwhile sets off no other script on the same stack, but in a later
/// iteration of the main loop. So scripts that set each other off in a circle leave the loop to its
/// other work. (Reports of detectors are the exception; no script makes them.)
class ScriptTurn {
 public:
  ScriptTurn() { ++depth_; }
  ~ScriptTurn() { --depth_; }
  ScriptTurn(const ScriptTurn&) = delete;
  ScriptTurn& operator=(const ScriptTurn&) = delete;

  [[nodiscard]] static bool is_running() { return depth_ != 0; }

 private:
  static inline unsigned depth_ = 0;
};

}  // namespace zemblar
