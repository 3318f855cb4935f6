#include "scripts/script_command_get_speed.h"

#include <algorithm>

#include "core/i18n.h"
#include "core/yaml_io.h"
#include "scripts/script.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"
#include "scripts/script_variable.h"

namespace zemblar {
namespace {

void register_script_command_get_speed() {
  register_script_command<ScriptCommandGetSpeed>("get_speed", N_("Get Locomotive Speed"));
}
[[maybe_unused]] const bool registered = (register_script_command_get_speed(), true);

constexpr auto speed_type = static_cast<int>(ScriptVariable::Kind::speed);

/// Claims the first of the names "Speed", "Speed 1", "Speed 2"... that is free.
Glib::ustring claim_free_name(Script& script) {
  Glib::ustring name = _("Speed");
  const auto taken = script.get_variables(0);
  for (unsigned number = 1; std::ranges::find(taken, name) != taken.end(); ++number) {
    name = Glib::ustring::compose(_("Speed %1"), number);
  }
  script.add_variable(name, speed_type);
  return name;
}

}  // namespace

ScriptCommandGetSpeed::ScriptCommandGetSpeed(Script& owner)
    : ScriptCommandLok(owner), variable(claim_free_name(owner)) {}

ScriptCommandGetSpeed::ScriptCommandGetSpeed(Script& owner, const YAML::Node& entry)
    : ScriptCommandLok(owner, entry) {
  element(entry, 2) >> variable;
  script->add_variable(variable, speed_type);
}

ScriptCommandGetSpeed::~ScriptCommandGetSpeed() {
  script->remove_variable(variable);
}

void ScriptCommandGetSpeed::save(YAML::Emitter& out) const {
  ScriptCommandLok::save(out);
  out << variable;
}

Glib::ustring ScriptCommandGetSpeed::get_format() const {
  return _("Get %1 Speed as %2");
}

std::vector<ScriptLine::Argument> ScriptCommandGetSpeed::arguments() {
  auto all = ScriptCommandLok::arguments();
  all.push_back({.type = ArgType::text,
                 .text = [this] { return variable; },
                 .variable_type = speed_type,
                 .set_text = [this](const Glib::ustring& name) { set_variable(name); }});
  return all;
}

void ScriptCommandGetSpeed::set_variable(const Glib::ustring& name) {
  if (name.raw() == variable.raw() || !script->add_variable(name, speed_type)) return;
  signal_changing().emit();
  script->remove_variable(variable);
  variable = name;
  signal_line_changed().emit(2);
}

void ScriptCommandGetSpeed::run(ScriptContext& /*context*/) {}

}  // namespace zemblar
