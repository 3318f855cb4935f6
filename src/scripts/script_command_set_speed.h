#pragma once

#include "scripts/script_command_lok.h"

namespace zemblar {

/// "Set %1 Speed to %2". In a layout file the locomotive, the speed, and `%` or `km/h`.
///
/// A speed in km/h is converted to a fraction of the locomotive's top speed. A speed above the top
/// speed, or above 100 %, becomes full speed. Setting the locomotive's own speed, outside a level
/// of temporary changes, ends an emergency stop.
class ScriptCommandSetSpeed : public ScriptCommandLok {
 public:
  explicit ScriptCommandSetSpeed(Script& owner) : ScriptCommandLok(owner) {}
  ScriptCommandSetSpeed(Script& owner, const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;

  [[nodiscard]] SpeedArg get_speed() const { return speed; }
  void set_speed(const SpeedArg& value);

 private:
  [[nodiscard]] std::vector<Argument> arguments() override;
  SpeedArg speed{.speed = 100, .km_h = false};
};

}  // namespace zemblar
