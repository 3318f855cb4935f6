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
  [[nodiscard]] Glib::ustring get_arg_text(unsigned arg) const override;
  [[nodiscard]] ArgType get_arg_type(unsigned arg) const override;
  [[nodiscard]] std::vector<ScriptChoice> choices(unsigned arg) override;
  void run(ScriptContext& context) override;

  [[nodiscard]] Direction get_direction() const { return direction; }
  void set_direction(Direction value);

 private:
  Direction direction = Direction::Forwards;
};

}  // namespace zemblar
