#pragma once

#include "scripts/script_command_lok.h"

namespace zemblar {

/// "Get %1 Speed as %2": claims a name for a speed. No line uses the name yet, and `run` does
/// nothing. In a layout file the locomotive and the name.
class ScriptCommandGetSpeed : public ScriptCommandLok {
 public:
  explicit ScriptCommandGetSpeed(Script& owner);
  ScriptCommandGetSpeed(Script& owner, const YAML::Node& entry);
  ~ScriptCommandGetSpeed() override;

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;

 private:
  [[nodiscard]] std::vector<Argument> arguments() override;
  /// Refuses a name that has another type.
  void set_variable(const Glib::ustring& name);

  Glib::ustring variable;
};

}  // namespace zemblar
