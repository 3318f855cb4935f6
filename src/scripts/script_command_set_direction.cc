#include "scripts/script_command_set_direction.h"

#include <cassert>

#include "core/i18n.h"
#include "core/yaml_io.h"
#include "scripts/script_context.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

void register_script_command_set_direction() {
  register_script_command<ScriptCommandSetDirection>("set_direction",
                                                     N_("Set Locomotive Direction"));
}
[[maybe_unused]] const bool registered = (register_script_command_set_direction(), true);

Glib::ustring direction_text(Direction direction) {
  return direction == Direction::Forwards ? _("Forwards") : _("Reverse");
}

}  // namespace

ScriptCommandSetDirection::ScriptCommandSetDirection(Script& owner, const YAML::Node& entry)
    : ScriptCommandLok(owner, entry) {
  element(entry, 2) >> direction;
}

void ScriptCommandSetDirection::save(YAML::Emitter& out) const {
  ScriptCommandLok::save(out);
  assert((direction == Direction::Forwards) || (direction == Direction::Reverse));
  out << direction;
}

Glib::ustring ScriptCommandSetDirection::get_format() const {
  return C_("Set Direction", "Set %1 %2");
}

std::vector<ScriptLine::Argument> ScriptCommandSetDirection::arguments() {
  auto all = ScriptCommandLok::arguments();
  all.push_back(one_of(2, direction, {Direction::Forwards, Direction::Reverse}, direction_text));
  return all;
}

void ScriptCommandSetDirection::set_direction(Direction value) {
  change(2, direction, value);
}

void ScriptCommandSetDirection::run(ScriptContext& context) {
  if (auto* lok = target(context)) context.set_direction(*lok, direction);
}

}  // namespace zemblar
