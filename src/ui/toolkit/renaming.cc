#include "ui/toolkit/renaming.h"

#include "core/i18n.h"
#include "core/object.h"
#include "core/status.h"

namespace zemblar {
namespace {

/// The last complaint; empty after an accepted name.
Glib::ustring& last_complaint() {
  static Glib::ustring text;
  return text;
}

}  // namespace

void rename_by_hand(Object& object, const Glib::ustring& name) {
  if (name.raw() == object.get_name().raw()) return;
  object.set_name(name);
  if (object.get_name().raw() == name.raw()) return accept_name();
  if (name.empty()) return;
  refuse_name(
      Glib::ustring::compose(_("“%1” is taken: “%2” keeps its name."), name, object.get_name()));
}

void refuse_name(const Glib::ustring& complaint) {
  last_complaint() = complaint;
  set_status(complaint);
}

void accept_name() {
  if (!last_complaint().empty() && get_status().raw() == last_complaint().raw()) clear_status();
  last_complaint().clear();
}

}  // namespace zemblar
