#include "track/train_condition.h"

#include <algorithm>
#include <set>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/status.h"
#include "devices/command_station.h"
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

/// Lost stations that would serve all decoders without a device of their own.
Stations lost_default_stations() {
  Stations lost;
  for_each_device(Layout::get().get_devices(), [&lost](Device& device) {
    const auto* station = dynamic_cast<CommandStation*>(&device);
    const bool is_lost = device.link_state().phase == LinkPhase::lost;
    if (station && is_lost && station->get_use_as_default()) lost.push_back(&device);
  });
  return lost;
}

/// The devices that get the locomotive's commands, in service or not.
Stations stations_of(const Lok& lok) {
  std::set<Device*> found;
  bool by_default = false;
  for (const auto& decoder : lok.get_decoders()) {
    if (!decoder->get_commands_enabled()) continue;
    auto* own = decoder->get_device();
    if (own) found.insert(own);
    by_default = by_default || !own;
  }
  if (by_default) {
    const auto& members = Layout::get().get_default_device().devices();
    const auto lost = lost_default_stations();
    found.insert(members.begin(), members.end());
    found.insert(lost.begin(), lost.end());
  }
  return {found.begin(), found.end()};
}

bool takes_commands(const Lok& lok) {
  return std::ranges::any_of(lok.get_decoders(),
                             [](const auto& decoder) { return decoder->get_commands_enabled(); });
}

/// True if the station has an address for each of the locomotive's decoders that it drives.
bool can_address(const Device& station, const Lok& lok) {
  return std::ranges::all_of(lok.get_decoders(), [&station](const auto& decoder) {
    const auto* own = decoder->get_device();
    return (own && own != &station) || station.has_address_for(*decoder.operator->());
  });
}

/// The sentence about the stations for which `check` is true: `only` if there is one station in
/// all, `all` if it is true for each of several, else `one` with the name of the first; empty if
/// none.
struct Wording {
  const char* only;
  const char* all;
  const char* one;  // with a place for its name
};
template <typename Check>
Glib::ustring sentence_about(const Stations& stations, const Wording& wording, const Check& check) {
  const auto first = std::ranges::find_if(stations, check);
  if (first == stations.end()) return {};
  if (stations.size() == 1) return wording.only;
  if (std::ranges::all_of(stations, check)) return wording.all;
  return Glib::ustring::compose(wording.one, (*first)->get_name());
}

/// The block ahead of a locomotive; null when the track ends there.
struct Ahead {
  const Block* block = nullptr;
  bool is_free = false;  // neither held by another locomotive nor occupied; then the operator has
                         // set the brake
};
Ahead ahead_of(const Lok& lok) {
  const auto* next = lok.front ? lok.front->get_partner() : nullptr;
  if (!next) return {};
  const auto* block = next->get_block();
  const auto* holder = block->get_lok();
  return {block, (!holder || holder == &lok) && !block->occupied()};
}

/// The speed that the decoders would receive without the brake.
unsigned wanted_speed(const Lok& lok) {
  return ScriptOverlay::apply(const_cast<Lok*>(&lok), lok.get_speed());
}

/// Says what releasing the brake does: it restores the speed from before the brake, which may
/// differ from the one that is wanted now.
Glib::ustring release_sentence(const Lok& lok) {
  if (ahead_of(lok).is_free) return _("Release it in the track editor.");
  const auto speed = lok.get_speed_overlay();
  const auto wanted = wanted_speed(lok);
  if (speed == wanted) {
    return speed == 0 ? "" : Glib::ustring::compose(_("Drives on by itself at %1."), speed);
  }
  if (speed == 0) return _("Then move the scale to drive on.");
  return Glib::ustring::compose(
      _("Drives on by itself at %1, not at %2. Press Emergency Stop to keep it here."), speed,
      wanted);
}

Glib::ustring held_sentence(const Lok& lok) {
  if (lok.get_emergency_stop()) return with_sentence(_("Emergency stop"), hold_sentence(lok));
  const auto next = release_sentence(lok);
  return next.empty() ? hold_sentence(lok) : with_sentence(hold_sentence(lok), next);
}

Glib::ustring drive_sentence(const Lok& lok) {
  if (lok.get_brake()) return held_sentence(lok);
  if (lok.get_emergency_stop()) return _("Emergency stop: move the scale to drive on");
  const auto speed = lok.get_speed_overlay();
  const auto sentence = [speed](const char* stands, const char* drives) {
    return speed == 0 ? Glib::ustring(stands) : Glib::ustring::compose(drives, speed);
  };
  if (speed == lok.get_speed()) return sentence(_("Stands"), _("Drives at %1"));
  if (speed == wanted_speed(lok)) {
    return sentence(_("A script has stopped it"), _("A script drives it at %1"));
  }
  // Releasing the brake has restored the speed from before it.
  return sentence(_("Stands: move the scale to drive on"),
                  _("Drives at %1: move the scale for another speed"));
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
  const auto ahead = ahead_of(lok);
  if (!ahead.block) return _("Held: the track ends ahead, or a point is set against it");
  if (ahead.is_free) return _("Held: its brake is on");
  const auto* holder = ahead.block->get_lok();
  if (!holder || holder == &lok) {
    return Glib::ustring::compose(_("Held: %1 is occupied"), ahead.block->get_name());
  }
  return Glib::ustring::compose(_("Held: %1 is taken by %2"), ahead.block->get_name(),
                                holder->get_name());
}

Glib::ustring reach_sentence(const Lok& lok) {
  if (!takes_commands(lok)) return _("Its commands are switched off in the track editor");
  auto stations = stations_of(lok);
  const auto has_phase = [](LinkPhase phase) {
    return [phase](const Device* station) { return station->link_state().phase == phase; };
  };
  // A station that cannot address the locomotive does not count if another one can.
  const auto former_count = stations.size();
  std::erase_if(stations, [&lok](const Device* station) { return !can_address(*station, lok); });
  if (stations.empty() && former_count > 0) {
    return former_count == 1 ? _("The station has no such address")
                             : _("No station has such an address");
  }
  const auto lost = sentence_about(
      stations, {_("The station is lost"), _("All stations are lost"), _("%1 is lost")},
      has_phase(LinkPhase::lost));
  if (!lost.empty()) return lost;
  std::erase_if(stations, [](const Device* device) { return !device->active(); });
  if (stations.empty()) return _("No command station is in service for it");
  const auto mute = sentence_about(
      stations,
      {_("The station does not answer"), _("No station answers"), _("%1 does not answer")},
      has_phase(LinkPhase::waiting_for_answer));
  if (!mute.empty()) return mute;
  std::erase_if(stations, [](const Device* station) { return !switches_power(*station); });
  return sentence_about(
      stations, {_("Track power is off"), _("Track power is off"), _("Track power is off at %1")},
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
  return zone.has_input() && !zone.occupied() ? _("Reserved for it, and reads free") : "";
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
