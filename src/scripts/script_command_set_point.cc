#include "scripts/script_command_set_point.h"

#include "core/i18n.h"
#include "scripts/script_context.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

void register_script_command_set_point() {
  register_script_command<ScriptCommandSetPoint>("set_point", N_("Set Point or Signal"),
                                                 MenuPart::additions);
}
[[maybe_unused]] const bool registered = (register_script_command_set_point(), true);

}  // namespace

ScriptCommandSetPoint::ScriptCommandSetPoint(Script& owner) : ScriptCommand(owner) {
  subject_.signal_changing().connect(signal_changing().make_slot());
  subject_.signal_changed().connect([this] { announce_first_two(); });
}

ScriptCommandSetPoint::ScriptCommandSetPoint(Script& owner, const YAML::Node& entry)
    : ScriptCommandSetPoint(owner) {
  subject_.load(entry, 1);
}

void ScriptCommandSetPoint::save(YAML::Emitter& out) const {
  subject_.save(out);
}

Glib::ustring ScriptCommandSetPoint::get_format() const {
  return C_("Set Point", "Set %1 to %2");
}

std::vector<ScriptLine::Argument> ScriptCommandSetPoint::arguments() {
  return point_arguments(
      subject_, [this](PointBase* point) { set_point(point); },
      [this](PointState* state) { set_state(state); });
}

void ScriptCommandSetPoint::set_point(PointBase* point) {
  if (point == subject_.get_point()) return;
  signal_changing().emit();
  subject_.set_point(point);
  announce_first_two();
}

void ScriptCommandSetPoint::set_state(PointState* state) {
  if (state == subject_.get_state()) return;
  signal_changing().emit();
  subject_.set_state(state);
  signal_line_changed().emit(2);
}

void ScriptCommandSetPoint::run(ScriptContext& context) {
  auto* point = subject_.get_point();
  auto* state = subject_.get_state();
  if (point && state && !point->is_deleting()) context.set_point(*point, *state);
}

}  // namespace zemblar
