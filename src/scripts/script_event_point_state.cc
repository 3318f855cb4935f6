#include "scripts/script_event_point_state.h"

#include "core/i18n.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

void register_script_event_point_state() {
  register_script_event<ScriptEventPointState>("point_state", N_("Point or Signal Is…"),
                                               MenuPart::additions);
}
[[maybe_unused]] const bool registered = (register_script_event_point_state(), true);

}  // namespace

ScriptEventPointState::ScriptEventPointState() {
  subject_.signal_changing().connect(signal_changing().make_slot());
  subject_.signal_changed().connect([this] { follow_subject(); });
}

ScriptEventPointState::ScriptEventPointState(const YAML::Node& entry) : ScriptEventPointState() {
  subject_.load(entry, 2);
}

void ScriptEventPointState::save(YAML::Emitter& out) const {
  subject_.save(out);
}

Glib::ustring ScriptEventPointState::get_format() const {
  return _("%1 is %2");
}

std::vector<ScriptLine::Argument> ScriptEventPointState::arguments() {
  return point_arguments(
      subject_, [this](PointBase* point) { choose_point(point); },
      [this](PointState* state) { choose_state(state); });
}

void ScriptEventPointState::choose_point(PointBase* point) {
  if (point != subject_.get_point()) {
    signal_changing().emit();
    subject_.set_point(point);
  }
  watch_chosen();
}

void ScriptEventPointState::choose_state(PointState* state) {
  if (state == subject_.get_state()) return;
  signal_changing().emit();
  subject_.set_state(state);
  announce();
}

WatchingEvent::Watches ScriptEventPointState::watch() {
  Watches watches;
  if (auto* point = subject_.get_point()) {
    watches.emplace_back(point->signal_state_changed().connect([this] { trigger(); }));
  }
  return watches;
}

Glib::ustring ScriptEventPointState::no_subject_words() const {
  return _("No point or signal is chosen: this condition never holds.");
}

bool ScriptEventPointState::is_settled() const {
  return !subject_.get_point() || !subject_.get_point()->is_deleting();
}

void ScriptEventPointState::generate_instances(const EventInstance& partial) {
  if (subject_.holds()) yield(partial);
}

}  // namespace zemblar
