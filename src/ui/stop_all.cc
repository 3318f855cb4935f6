#include "ui/stop_all.h"

#include <gdk/gdkkeysyms.h>
#include <gtk/gtk.h>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/status.h"
#include "devices/track_power.h"
#include "locomotives/moving_trains.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

/// A key that is held down comes again sooner than that. A release can be lost with the focus, and
/// must not make the next press a repetition.
constexpr auto longest_pause_of_repetition = 800ms;

bool is_stop_key(const GdkEventKey& event) {
  constexpr guint shortcut = GDK_CONTROL_MASK | GDK_SHIFT_MASK;
  return (event.state & gtk_accelerator_get_default_mod_mask()) == shortcut &&
         (event.keyval == GDK_KEY_space || event.keyval == GDK_KEY_KP_Space);
}

bool is_space(const GdkEventKey& event) {
  return event.keyval == GDK_KEY_space || event.keyval == GDK_KEY_KP_Space;
}

int on_key_event(GtkWidget* /*grab*/, GdkEventKey* event, void* /*unused*/) {
  const bool pressed = event->type == GDK_KEY_PRESS;
  if (pressed ? !is_stop_key(*event) : !is_space(*event)) return FALSE;
  StopAll::get().on_key(pressed);
  return pressed;
}

}  // namespace

StopAll& StopAll::get() {
  static StopAll the_one;
  return the_one;
}

void StopAll::install() {
  gtk_key_snooper_install(&on_key_event, nullptr);
}

void StopAll::on_key(bool pressed) {
  const bool was_down = std::exchange(key_is_down_, pressed);
  if (!pressed) return;
  const auto since = Clock::now() - std::exchange(key_seen_, Clock::now());
  if (!was_down || since > longest_pause_of_repetition) press();
}

void StopAll::press() {
  const auto now = Clock::now();
  const bool again = is_armed_ && now - pressed_ <= second_press;
  is_armed_ = true;
  pressed_ = now;
  const bool reaches_any = !power_stations(Layout::get().get_devices()).empty();
  if (again) {
    Layout::get().set_track_power(false);
  } else {
    emergency_stop_all();
  }
  if (!reaches_any) {
    set_status(_("No command station is in service: nothing on the track could be stopped."));
  } else if (again) {
    set_status(_("The track power is being switched off at every station."));
  } else {
    set_status(
        _("Emergency stop of all locomotives. Once more within 2 seconds switches the track power "
          "off."));
  }
}

}  // namespace zemblar
