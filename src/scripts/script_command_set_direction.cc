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

Glib::ustring ScriptCommandSetDirection::get_arg_text(unsigned arg) const {
  return arg == 2 ? direction_text(direction) : ScriptCommandLok::get_arg_text(arg);
}

ScriptLine::ArgType ScriptCommandSetDirection::get_arg_type(unsigned arg) const {
  return arg == 2 ? ArgType::menu : ScriptCommandLok::get_arg_type(arg);
}

std::vector<ScriptChoice> ScriptCommandSetDirection::choices(unsigned arg) {
  if (arg != 2) return ScriptCommandLok::choices(arg);
  const auto offer = [this](Direction value) {
    return choice(direction_text(value), [this, value] { set_direction(value); });
  };
  return {offer(Direction::Forwards), offer(Direction::Reverse)};
}

void ScriptCommandSetDirection::set_direction(Direction value) {
  if (value == direction) return;
  signal_changing().emit();
  direction = value;
  signal_line_changed().emit(2);
}

void ScriptCommandSetDirection::run(ScriptContext& context) {
  if (auto* lok = target(context)) context.set_direction(*lok, direction);
}

}  // namespace zemblar
