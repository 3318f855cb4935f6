#include "ui/panels/external_throttle.h"

#include "core/i18n.h"

namespace zemblar {

ExternalThrottle::ExternalThrottle()
    : Glib::ObjectBase("ExternalThrottle"), Object(_("External Throttle %1")) {}

}  // namespace zemblar
