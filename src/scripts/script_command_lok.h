#pragma once

#include "scripts/lok_subject.h"
#include "scripts/script_command.h"

namespace zemblar {

/// A command for a locomotive: one that the line names, or the locomotive of the run. The first
/// argument selects it; without a locomotive the command does nothing.
///
/// In a layout file the locomotive's number, `This`, or null.
class ScriptCommandLok : public ScriptCommand {
 public:
  void save(YAML::Emitter& out) const override;

  [[nodiscard]] Lok* get_lok() const { return lok.get_lok(); }
  [[nodiscard]] bool get_this_lok() const { return this_lok; }
  void set_lok(Lok* chosen);
  void set_this_lok();

 protected:
  [[nodiscard]] std::vector<Argument> arguments() override;
  explicit ScriptCommandLok(Script& owner);
  ScriptCommandLok(Script& owner, const YAML::Node& entry);

  /// The locomotive that a run commands, or null.
  [[nodiscard]] Lok* target(const ScriptContext& context) const;

 private:
  LokSubject lok;
  bool this_lok = true;
};

}  // namespace zemblar
