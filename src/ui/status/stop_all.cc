#include "ui/status/stop_all.h"

#include <gdk/gdkkeysyms.h>
#include <gtk/gtk.h>

#include <utility>
#include <vector>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/status.h"
#include "devices/device.h"
#include "devices/track_power.h"
#include "locomotives/lok.h"
#include "locomotives/lok_registry.h"
#include "locomotives/moving_trains.h"
#include "scripts/script.h"
#include "track/train_condition.h"
#include "ui/toolkit/key_place.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

/// Repetitions of a held key come at shorter intervals. A later press is a new one even if no
/// release was seen, since that can be lost with the focus.
constexpr auto longest_pause_of_repetition = 800ms;

constexpr auto nothing_to_stop =
    N_("No command station is in service: nothing on the track could be stopped.");

/// After this time a Shift key counts as released, because it does not repeat and its release can
/// be lost.
constexpr auto longest_shift = 5s;

/// The names of the trains that cannot be reached, each with the reason. Empty if the track power
/// is off, because then no train moves.
Glib::ustring unreached(const std::vector<Lok*>& moving) {
  Glib::ustring list;
  if (power_state(Layout::get().get_devices()) == PowerState::off) return list;
  for (const auto* lok : moving) {
    const auto why = reach_sentence(*lok);
    if (why.empty()) continue;
    if (!list.empty()) list += ", ";
    list += Glib::ustring::compose("%1 (%2)", lok->get_name(), why);
  }
  return list;
}

std::vector<Lok*> moving_trains() {
  std::vector<Lok*> moving;
  for_each_lok(Layout::get().get_loks(), [&moving](Lok& lok) {
    if (may_move(lok)) moving.push_back(&lok);
  });
  return moving;
}

void switch_power_off() {
  const auto& devices = Layout::get().get_devices();
  Layout::get().set_track_power(false);
  if (power_stations(devices).empty()) return set_status(_(nothing_to_stop));
  const auto lost = lost_power_stations(devices);
  if (lost.empty()) {
    return set_status(_("The track power is being switched off at every station."));
  }
  set_status(Glib::ustring::compose(_("The track power is being switched off, but %1 is lost: "
                                      "press the stop key of the station."),
                                    lost.front()->get_name()));
}

void stop_trains() {
  const auto moving = moving_trains();
  stop_scripts();
  emergency_stop_all();
  if (power_stations(Layout::get().get_devices()).empty()) return set_status(_(nothing_to_stop));
  const auto missed = unreached(moving);
  if (!missed.empty()) {
    return set_status(Glib::ustring::compose(
        _("Emergency stop, but these are not reached: %1. Once more within 2 seconds switches the "
          "track power off."),
        missed));
  }
  set_status(
      _("Emergency stop of all locomotives, and scripts sleep. Once more within 2 seconds switches "
        "the track power off."));
}

}  // namespace

StopAll& StopAll::get() {
  static StopAll the_one;
  return the_one;
}

void StopAll::install() {
  gtk_key_snooper_install([](GtkWidget* /*grab*/, GdkEventKey* event,
                             void* /*unused*/) -> int { return get().on_key(*event); },
                          nullptr);
}

/// True if no widget may get the event.
bool StopAll::on_key(const GdkEventKey& event) {
  watch_shift(event);
  const bool pressed = event.type == GDK_KEY_PRESS;
  const bool with_control = (event.state & GDK_CONTROL_MASK) != 0;
  if (pressed && !(with_control && is_shifted(event))) return false;
  if (!has_meaning(event, {GDK_KEY_space, GDK_KEY_KP_Space})) return false;
  on_space(pressed);
  return pressed;
}

// Tracks Shift itself: on some systems Control and Shift switch the keyboard layout, and then
// events lack the Shift modifier.
void StopAll::watch_shift(const GdkEventKey& event) {
  if (!has_meaning(event, {GDK_KEY_Shift_L, GDK_KEY_Shift_R})) return;
  shift_is_down_.reset();
  if (event.type == GDK_KEY_PRESS) shift_is_down_ = Clock::now();
}

bool StopAll::is_shifted(const GdkEventKey& event) const {
  return (event.state & GDK_SHIFT_MASK) != 0 ||
         (shift_is_down_ && Clock::now() - *shift_is_down_ < longest_shift);
}

void StopAll::on_space(bool pressed) {
  const bool was_down = std::exchange(space_is_down_, pressed);
  if (!pressed) return;
  const auto since = Clock::now() - std::exchange(space_seen_, Clock::now());
  if (!was_down || since > longest_pause_of_repetition) press();
}

void StopAll::press() {
  const auto now = Clock::now();
  const auto former = std::exchange(pressed_, now);
  const bool again = former && now - *former <= second_press;
  again ? switch_power_off() : stop_trains();
}

}  // namespace zemblar
