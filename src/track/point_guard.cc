#include "track/point_guard.h"

#include "core/global_options.h"
#include "core/i18n.h"
#include "core/status.h"
#include "locomotives/lok.h"
#include "track/point_base.h"

namespace zemblar {

Glib::ustring why_protected(const PointBase& point) {
  if (!GlobalOptions::get().get_points_protected()) return {};
  const auto* lok = point.get_lok();
  const bool awaited = lok && point.get_reservations().keeps_for(*lok) && !lok->spans(&point);
  if (lok && !awaited) {
    return Glib::ustring::compose(_("%1 stays as it is: %2 is there."), point.get_name(),
                                  lok->get_name());
  }
  if (!point.occupied()) return {};
  return Glib::ustring::compose(_("%1 stays as it is: its block is occupied."), point.get_name());
}

void set_by_hand(PointBase& point, PointState& state, bool insists) {
  const auto why = insists || &state == point.get_state() ? Glib::ustring() : why_protected(point);
  if (why.empty()) return point.set_state(&state);
  set_status(with_sentence(why, _("With Shift held it is set all the same.")));
}

bool lets_script_set(const PointBase& point, const PointState& state) {
  const auto why = &state == point.get_state() ? Glib::ustring() : why_protected(point);
  if (!why.empty()) set_status(why);
  return why.empty();
}

}  // namespace zemblar
