#include "scripts/script_command_set_speed.h"

#include <algorithm>
#include <cmath>

#include "core/i18n.h"
#include "core/yaml_io.h"
#include "scripts/script_context.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

void register_script_command_set_speed() {
  register_script_command<ScriptCommandSetSpeed>("set_speed", N_("Set Locomotive Speed"));
}
[[maybe_unused]] const bool registered = (register_script_command_set_speed(), true);

constexpr unsigned full_speed = 126;

/// The speed in decoder steps, 0 to 126.
unsigned step_of(const SpeedArg& arg, int top_speed) {
  const unsigned whole = arg.km_h ? static_cast<unsigned>(std::max(top_speed, 0)) : 100;
  if (arg.speed >= whole) return full_speed;
  if (!arg.km_h) return static_cast<unsigned>(std::lround(arg.speed * 126.0 / 100.0));
  return static_cast<unsigned>(
      std::lround(static_cast<float>(arg.speed) * 126.0F / static_cast<float>(whole)));
}

}  // namespace

ScriptCommandSetSpeed::ScriptCommandSetSpeed(Script& owner, const YAML::Node& entry)
    : ScriptCommandLok(owner, entry), speed(read_speed(entry, 2)) {}

void ScriptCommandSetSpeed::save(YAML::Emitter& out) const {
  ScriptCommandLok::save(out);
  write_speed(out, speed);
}

Glib::ustring ScriptCommandSetSpeed::get_format() const {
  return C_("Set Speed", "Set %1 Speed to %2");
}

std::vector<ScriptLine::Argument> ScriptCommandSetSpeed::arguments() {
  auto all = ScriptCommandLok::arguments();
  all.push_back(speed_argument(2, speed));
  return all;
}

void ScriptCommandSetSpeed::set_speed(const SpeedArg& value) {
  change(2, speed, value);
}

void ScriptCommandSetSpeed::run(ScriptContext& context) {
  if (auto* lok = target(context)) context.set_speed(*lok, step_of(speed, lok->get_top_speed()));
}

}  // namespace zemblar
