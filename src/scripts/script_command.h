#pragma once

#include "scripts/script_line.h"

namespace zemblar {

class Script;
struct ScriptContext;

/// A command of a script.
class ScriptCommand : public ScriptLine {
 public:
  explicit ScriptCommand(Script& owner) : script(&owner) {}

  /// Executes the command on the fiber of a run. May suspend; this line may have ended when the
  /// fiber continues.
  virtual void run(ScriptContext& context) = 0;

  Script* const script;
};

}  // namespace zemblar
