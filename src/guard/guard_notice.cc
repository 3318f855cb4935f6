#include "guard/guard_notice.h"

#include <giomm/dbusconnection.h>
#include <giomm/init.h>
#include <glib.h>
#include <glibmm/datetime.h>
#include <glibmm/miscutils.h>
#include <glibmm/variant.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "core/i18n.h"

namespace zemblar::guard {
namespace {

constexpr int answer_time = 2000;  // ms, for the notification service

Glib::ustring cause(End end) {
  return end == End::silent
             ? Glib::ustring::compose(
                   dngettext(GETTEXT_PACKAGE, "Zemblar gave no sign of life for %1 second.",
                             "Zemblar gave no sign of life for %1 seconds.",
                             static_cast<unsigned long>(longest_silence.count())),
                   longest_silence.count())
             : Glib::ustring(_("Zemblar has ended without taking leave."));
}

Glib::ustring sentence(const Outcome& outcome) {
  return Glib::ustring::compose(outcome.stopped
                                    ? _("%1: the track power is off.")
                                    : _("%1 did not answer: switch its track power off by hand."),
                                outcome.name);
}

void write_log(const Glib::ustring& text) {
  const auto folder = std::filesystem::path(g_get_user_state_dir()) / "zemblar";
  std::error_code ignored;
  std::filesystem::create_directories(folder, ignored);
  std::ofstream log(folder / "guard.log", std::ios::app);
  log << Glib::DateTime::create_now_local().format("%F %T ").raw() << text.raw() << '\n';
}

Glib::VariantContainerBase notification(const Glib::ustring& summary, const Glib::ustring& body) {
  using Glib::Variant;
  constexpr guint8 critical = 2;
  const std::map<Glib::ustring, Glib::VariantBase> hints = {
      {"urgency", Variant<guint8>::create(critical)}};
  return Glib::VariantContainerBase::create_tuple(
      {Variant<Glib::ustring>::create("Zemblar"), Variant<guint32>::create(0),
       Variant<Glib::ustring>::create("zemblar"), Variant<Glib::ustring>::create(summary),
       Variant<Glib::ustring>::create(body), Variant<std::vector<Glib::ustring>>::create({}),
       Variant<std::map<Glib::ustring, Glib::VariantBase>>::create(hints),
       Variant<gint32>::create(-1)});
}

void notify(const Glib::ustring& summary, const Glib::ustring& body) try {
  Gio::init();
  const auto bus = Gio::DBus::Connection::get_sync(Gio::DBus::BUS_TYPE_SESSION);
  bus->call_sync("/org/freedesktop/Notifications", "org.freedesktop.Notifications", "Notify",
                 notification(summary, body), "org.freedesktop.Notifications", answer_time);
} catch (const Glib::Error&) {
  // There is no notification service; the log has the text.
}

}  // namespace

void report(End end, const std::vector<Outcome>& outcomes) {
  set_up_language();
  Glib::ustring body;
  for (const auto& outcome : outcomes) {
    if (!body.empty()) body += ' ';
    body += sentence(outcome);
  }
  write_log(cause(end) + ' ' + body);
  notify(cause(end), body);
}

}  // namespace zemblar::guard
