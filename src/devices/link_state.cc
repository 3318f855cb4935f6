#include "devices/link_state.h"

#include "core/i18n.h"

namespace zemblar {

Glib::ustring display_name(LinkPhase phase) {
  switch (phase) {
    case LinkPhase::not_set_up:
      return _("not set up");
    case LinkPhase::looking_for_hardware:
      return _("looking for hardware");
    case LinkPhase::connecting:
      return _("connecting");
    case LinkPhase::in_service:
      return _("in service");
    case LinkPhase::waiting_for_answer:
      return _("waiting for an answer");
    case LinkPhase::lost:
      return _("lost");
  }
  return {};
}

}  // namespace zemblar
