#pragma once

#include "scripts/object_subject.h"
#include "scripts/script.h"
#include "scripts/script_command.h"

namespace zemblar {

/// "Run %1": runs the commands of a script once, for the block and the locomotive of this run, and
/// does not wait for their end. A script that runs itself without a wait in between ends its run.
///
/// In a layout file the script's number; null for none.
class ScriptCommandRunScript : public ScriptCommand {
 public:
  explicit ScriptCommandRunScript(Script& owner);
  ScriptCommandRunScript(Script& owner, const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;

 private:
  [[nodiscard]] std::vector<Argument> arguments() override;
  void choose(Script* chosen);

  ObjectSubject<Script> other_;
};

}  // namespace zemblar
