#include "ui/status/status_looks.h"

#include <glibmm/convert.h>
#include <glibmm/datetime.h>

#include "core/i18n.h"
#include "core/layout.h"
#include "core/recovery_copy.h"
#include "core/status.h"
#include "devices/device.h"
#include "devices/track_power.h"
#include "locomotives/lok.h"
#include "track/train_condition.h"

namespace zemblar {
namespace {

using Kind = StatusShape::Kind;
using Look = StatusMark::Look;

Kind shape_of(LinkPhase phase) {
  switch (phase) {
    case LinkPhase::in_service:
      return Kind::well;
    case LinkPhase::waiting_for_answer:
      return Kind::waiting;
    case LinkPhase::lost:
      return Kind::lost;
    default:
      return Kind::looking;
  }
}

Glib::ustring clock_time(Clock::time_point moment) {
  const auto ago = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - moment);
  return Glib::DateTime::create_now_local().add(-ago.count()).format("%X");
}

/// One line per station, with the state of its track power.
Glib::ustring list_of_stations() {
  const auto& devices = Layout::get().get_devices();
  Glib::ustring lines;
  for (const auto* station : power_stations(devices)) {
    lines += Glib::ustring::compose(station->track_power() ? _("\n%1: on") : _("\n%1: off"),
                                    station->get_name());
  }
  for (const auto* station : lost_power_stations(devices)) {
    lines += Glib::ustring::compose(_("\n%1: not known, it is lost"), station->get_name());
  }
  return lines;
}

/// Shortens a long name to its beginning and its end.
Glib::ustring shortened(const Glib::ustring& name) {
  constexpr std::size_t longest = 28;
  constexpr std::size_t part = longest / 2 - 1;
  if (name.length() <= longest) return name;
  return name.substr(0, part) + "…" + name.substr(name.length() - part);
}

/// One line per locomotive, with a sentence about it.
template <typename Sentence>
Glib::ustring list_of(const std::vector<Lok*>& loks, const Sentence& sentence) {
  Glib::ustring lines;
  for (const auto* lok : loks) {
    lines += Glib::ustring::compose("%1%2: %3", lines.empty() ? "" : "\n", lok->get_name(),
                                    sentence(*lok));
  }
  return lines;
}

}  // namespace

Look power_look() {
  switch (power_state(Layout::get().get_devices())) {
    case PowerState::on:
      return {Kind::well, _("Power on"), _("Track power: on"),
              _("The track power is on.") + list_of_stations()};
    case PowerState::off:
      return {Kind::off, _("Power off"), _("Track power: off"),
              _("The track power is off.") + list_of_stations()};
    case PowerState::differs:
      return {Kind::waiting, _("Power differs"), _("Track power: differs between stations"),
              _("The track power is not the same at all stations:") + list_of_stations()};
    case PowerState::no_station:
      break;
  }
  return {Kind::looking, _("No station"), _("Track power: no station"),
          _("No command station is in service, so the track power is not known.")};
}

Look device_look(const Device& device) {
  const auto& link = device.link_state();
  auto name = Glib::ustring::compose("%1: %2", device.get_name(), display_name(link.phase));
  auto sentence = link.since == Clock::time_point()
                      ? name
                      : Glib::ustring::compose(_("%1 since %2"), name, clock_time(link.since));
  if (!link.why.empty()) sentence = with_sentence(sentence, link.why);
  return {shape_of(link.phase), {}, std::move(name), std::move(sentence)};
}

Look held_look(const std::vector<Lok*>& held) {
  const auto text = Glib::ustring::compose(
      dngettext(GETTEXT_PACKAGE, "%1 held", "%1 held", held.size()), held.size());
  return {Kind::held, text, Glib::ustring::compose(_("Trains: %1"), text),
          list_of(held, hold_sentence)};
}

Look unplaced_look(const std::vector<Lok*>& unplaced) {
  const auto text = Glib::ustring::compose(
      dngettext(GETTEXT_PACKAGE, "%1 without a place", "%1 without a place", unplaced.size()),
      unplaced.size());
  return {Kind::waiting, text, Glib::ustring::compose(_("Trains: %1"), text),
          list_of(unplaced, [](const Lok&) {
            return Glib::ustring(_("no detector has told where it is, so nothing brakes it"));
          })};
}

Look file_look() {
  const auto path = Layout::get().get_path();
  const auto name = path.empty() ? _("New layout") : Glib::filename_display_basename(path);
  const auto where =
      path.empty() ? _("This layout has no file yet.") : Glib::filename_display_name(path);
  const auto* copies = RecoveryCopy::get();
  const auto text = shortened(name);
  if (!copies) return {Kind::none, text, Glib::ustring::compose(_("Layout: %1"), name), where};
  if (!copies->has_unsaved_work()) {
    const Glib::ustring state = path.empty() ? _("Nothing is to be saved.") : _("All is saved.");
    return {Kind::none, text, Glib::ustring::compose(_("Layout: %1, saved"), name),
            with_sentence(where, state)};
  }
  return {Kind::unsaved, Glib::ustring::compose(_("%1, unsaved"), text),
          Glib::ustring::compose(_("Layout: %1, unsaved"), name),
          with_sentence(where, _("There is work that is not in the file: choose Save in the menu "
                                 "File."))};
}

}  // namespace zemblar
