#pragma once

#include "scripts/script_line.h"

namespace zemblar {

class Script;
struct ScriptContext;

/// A command of a script.
class ScriptCommand : public ScriptLine {
 public:
  explicit ScriptCommand(Script& owner) : script(&owner) {}

  /// Carries the command out on the fiber of a run. It may suspend; the line may have ended when it
  /// goes on.
  virtual void run(ScriptContext& context) = 0;

  Script* const script;
};

}  // namespace zemblar
