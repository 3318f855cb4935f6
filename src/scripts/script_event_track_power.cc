#include "scripts/script_event_track_power.h"

#include "core/i18n.h"
#include "core/layout.h"
#include "core/yaml_io.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

void register_script_event_track_power() {
  register_script_event<ScriptEventTrackPower>("track_power", N_("Track Power Is…"),
                                               MenuPart::additions);
}
[[maybe_unused]] const bool registered = (register_script_event_track_power(), true);

}  // namespace

ScriptEventTrackPower::ScriptEventTrackPower(const YAML::Node& entry) {
  element(entry, 2) >> on_;
}

void ScriptEventTrackPower::save(YAML::Emitter& out) const {
  out << on_;
}

Glib::ustring ScriptEventTrackPower::get_format() const {
  return _("Track Power is %1");
}

std::vector<ScriptLine::Argument> ScriptEventTrackPower::arguments() {
  const auto text = [](bool on) -> Glib::ustring { return on ? _("On") : _("Off"); };
  const auto choices = [this, text] {
    return std::vector{choice(text(true), [this] { choose(true); }),
                       choice(text(false), [this] { choose(false); })};
  };
  return {{.type = ArgType::menu, .text = [this, text] { return text(on_); }, .choices = choices}};
}

void ScriptEventTrackPower::choose(bool on) {
  if (on != on_) signal_changing().emit();
  on_ = on;
  watch_chosen();
}

WatchingEvent::Watches ScriptEventTrackPower::watch() {
  Watches watches;
  watches.emplace_back(Layout::get().connect_property_changed_with_return(
      "track-power", sigc::mem_fun(*this, &ScriptEventTrackPower::trigger)));
  return watches;
}

void ScriptEventTrackPower::generate_instances(const EventInstance& partial) {
  if (Layout::get().get_track_power() == on_) yield(partial);
}

}  // namespace zemblar
