#pragma once

#include "scripts/script_command.h"

namespace zemblar {

/// "Save": begins a level of temporary changes. "Restore" or the end of the run takes them back.
class ScriptCommandSave : public ScriptCommand {
 public:
  explicit ScriptCommandSave(Script& owner) : ScriptCommand(owner) {}
  ScriptCommandSave(Script& owner, const YAML::Node& /*entry*/) : ScriptCommand(owner) {}

  void save(YAML::Emitter& /*out*/) const override {}
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;
};

/// "Restore": takes back all changes since the last "Save" without a "Restore"; in "While" mode,
/// without such a "Save", all changes of the run. Does nothing when no level is left.
class ScriptCommandRestore : public ScriptCommand {
 public:
  explicit ScriptCommandRestore(Script& owner) : ScriptCommand(owner) {}
  ScriptCommandRestore(Script& owner, const YAML::Node& /*entry*/) : ScriptCommand(owner) {}

  void save(YAML::Emitter& /*out*/) const override {}
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;
};

}  // namespace zemblar
