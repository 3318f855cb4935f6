#pragma once

#include "core/direction.h"
#include "scripts/script_command_lok.h"

namespace zemblar {

/// "Set %1 %2". In a layout file the locomotive and the direction. A temporary direction stays when
/// its level is taken back; see Lok.
class ScriptCommandSetDirection : public ScriptCommandLok {
 public:
  explicit ScriptCommandSetDirection(Script& owner) : ScriptCommandLok(owner) {}
  ScriptCommandSetDirection(Script& owner, const YAML::Node& entry);

  void save(YAML::Emitter& out) const override;
  [[nodiscard]] Glib::ustring get_format() const override;
  void run(ScriptContext& context) override;

  [[nodiscard]] Direction get_direction() const { return direction; }
  void set_direction(Direction value);

 private:
  [[nodiscard]] std::vector<Argument> arguments() override;
  Direction direction = Direction::Forwards;
};

}  // namespace zemblar
