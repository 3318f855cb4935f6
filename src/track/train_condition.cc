#include "track/train_condition.h"

#include <algorithm>
#include <set>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/status.h"
#include "devices/default_device.h"
#include "devices/track_power.h"
#include "locomotives/lok.h"
#include "locomotives/lok_registry.h"
#include "locomotives/moving_trains.h"
#include "locomotives/script_overlay.h"
#include "track/zone.h"

namespace zemblar {
namespace {

using Stations = std::vector<Device*>;

/// The devices that the locomotive's commands go to, whatever they do at present.
Stations stations_of(const Lok& lok) {
  std::set<Device*> found;
  const auto& defaults = Layout::get().get_default_device();
  for (const auto& decoder : lok.get_decoders()) {
    if (!decoder->get_commands_enabled()) continue;
    if (auto* own = decoder->get_device()) {
      found.insert(own);
    } else {
      found.insert(defaults.devices().begin(), defaults.devices().end());
    }
  }
  return {found.begin(), found.end()};
}

bool takes_commands(const Lok& lok) {
  return std::ranges::any_of(lok.get_decoders(),
                             [](const auto& decoder) { return decoder->get_commands_enabled(); });
}

/// The sentence for those of the stations of which something is true: `all` when it is true of all
/// of them, else `one` with the name of the first.
template <typename Check>
Glib::ustring tell_of(const Stations& stations, const char* all, const char* one,
                      const Check& check) {
  const auto first = std::ranges::find_if(stations, check);
  if (first == stations.end()) return {};
  if (std::ranges::all_of(stations, check)) return all;
  return Glib::ustring::compose(one, (*first)->get_name());
}

/// The speed at which the decoders would be told to drive if nothing held the locomotive.
unsigned wanted_speed(const Lok& lok) {
  return ScriptOverlay::apply(const_cast<Lok*>(&lok), lok.get_speed());
}

/// The release of the brake brings back the speed of the moment before it, which may be another one
/// than what is wanted by then.
Glib::ustring release_sentence(const Lok& lok) {
  const auto speed = lok.get_speed_overlay();
  const auto wanted = wanted_speed(lok);
  if (speed == wanted) {
    return speed == 0 ? "" : Glib::ustring::compose(_("Drives on by itself at %1."), speed);
  }
  if (speed == 0) return _("Then move the scale to drive on.");
  return Glib::ustring::compose(
      _("Drives on by itself at %1, not at %2: the emergency stop keeps it here."), speed, wanted);
}

Glib::ustring drive_sentence(const Lok& lok) {
  if (lok.get_emergency_stop()) return _("Emergency stop: move the scale to drive on");
  if (lok.get_brake()) {
    const auto next = release_sentence(lok);
    return next.empty() ? hold_sentence(lok) : with_sentence(hold_sentence(lok), next);
  }
  const auto speed = lok.get_speed_overlay();
  if (speed != lok.get_speed()) {
    return speed == 0 ? _("A script has stopped it")
                      : Glib::ustring::compose(_("A script drives it at %1"), speed);
  }
  return speed == 0 ? _("Stands") : Glib::ustring::compose(_("Drives at %1"), speed);
}

bool has_detectors(const Object& parent) {
  return std::ranges::any_of(parent.begin(), parent.end(), [](const Object* child) {
    const auto* block = dynamic_cast<const Block*>(child);
    return block && block->has_input();
  });
}

}  // namespace

Glib::ustring hold_sentence(const Lok& lok) {
  if (!lok.get_brake()) return {};
  if (!lok.front) return _("Held: its place on the track is not known");
  const auto* next = lok.front->get_partner();
  if (!next) return _("Held: the track ends ahead, or a point is set against it");
  const auto* block = next->get_block();
  const auto* holder = block->get_lok();
  if (holder && holder != &lok) {
    return Glib::ustring::compose(_("Held: %1 is taken by %2"), block->get_name(),
                                  holder->get_name());
  }
  return block->occupied()
             ? Glib::ustring::compose(_("Held: %1 is occupied"), block->get_name())
             : Glib::ustring::compose(_("Held before %1 until its detector tells something new"),
                                      block->get_name());
}

Glib::ustring reach_sentence(const Lok& lok) {
  if (!takes_commands(lok)) return _("Its commands are switched off in the track editor");
  auto stations = stations_of(lok);
  const auto is_out = [](const Device* device) { return !device->active(); };
  if (std::ranges::all_of(stations, is_out)) return _("No command station is in service for it");
  std::erase_if(stations, is_out);
  const auto mute = tell_of(stations, _("The station does not answer"), _("%1 does not answer"),
                            [](const Device* station) {
                              return station->link_state().phase == LinkPhase::waiting_for_answer;
                            });
  if (!mute.empty()) return mute;
  std::erase_if(stations, [](const Device* station) { return !switches_power(*station); });
  return tell_of(stations, _("Track power is off"), _("Track power is off at %1"),
                 [](const Device* station) { return !station->track_power(); });
}

Glib::ustring train_sentence(const Lok& lok) {
  const auto reach = reach_sentence(lok);
  if (reach.empty()) return drive_sentence(lok);
  const bool stopped = lok.get_emergency_stop() || lok.get_brake();
  return stopped ? with_sentence(reach, drive_sentence(lok)) : reach;
}

Glib::ustring zone_note(const Zone& zone) {
  const auto* lok = zone.get_lok();
  if (!lok) return {};
  if (!lok->front) return _("Its place is not known");
  if (lok->get_brake() && lok->front->get_block() == &zone) return hold_sentence(*lok);
  return zone.has_input() && !zone.occupied() ? _("Held for it, but empty") : "";
}

std::vector<Lok*> held_trains(const Object& parent) {
  std::vector<Lok*> held;
  for_each_lok(parent, [&held](Lok& lok) {
    if (lok.get_brake() && !lok.is_deleting()) held.push_back(&lok);
  });
  return held;
}

std::vector<Lok*> unplaced_trains(const Object& parent) {
  std::vector<Lok*> unplaced;
  if (!has_detectors(Layout::get().get_blocks())) return unplaced;
  for_each_lok(parent, [&unplaced](Lok& lok) {
    if (!lok.front && !lok.is_deleting() && may_move(lok)) unplaced.push_back(&lok);
  });
  return unplaced;
}

}  // namespace zemblar
