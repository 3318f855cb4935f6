#pragma once

#include "scripts/script_command.h"

namespace zemblar {

/// "Save": what the run changes from here on is taken back by "Restore", or at its end.
class ScriptCommandSave : public ScriptCommand {
 public:
  explicit ScriptCommandSave(Script& owner) : ScriptCommand(owner) {}
  ScriptCommandSave(Script& owner, const YAML::Node& /*entry*/) : ScriptCommand(owner) {}

  void save(YAML::Emitter& /*out*/) const override {}
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;
};

/// "Restore": takes back what the run has changed since the last "Save" that has not been taken
/// back, in "While" mode at last what it has changed at all. With nothing left it does nothing.
class ScriptCommandRestore : public ScriptCommand {
 public:
  explicit ScriptCommandRestore(Script& owner) : ScriptCommand(owner) {}
  ScriptCommandRestore(Script& owner, const YAML::Node& /*entry*/) : ScriptCommand(owner) {}

  void save(YAML::Emitter& /*out*/) const override {}
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;
};

}  // namespace zemblar
