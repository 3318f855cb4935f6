#include "ui/status/statusbar.h"

#include <glibmm/datetime.h>

#include "core/i18n.h"
#include "core/status.h"

namespace zemblar {
namespace {

using namespace std::chrono_literals;

constexpr auto lifetime = 1min;

}  // namespace

Statusbar::Statusbar() {
  set_has_resize_grip(false);
  show_text();
  signal_status_changed().connect(sigc::mem_fun(*this, &Statusbar::refresh));
}

void Statusbar::refresh() {
  pop(0);
  show_text();
}

void Statusbar::show_text() {
  const auto text = get_status();
  push(text, 0);
  set_grey(false);
  ageing_ = Timeout::once(lifetime, [this] { set_grey(!status_lasts()); });
  if (text.empty()) return set_tooltip_text(_("Nothing to tell. A click shows earlier messages."));
  const auto time = std::chrono::system_clock::to_time_t(status_history().front().time);
  set_tooltip_text(Glib::ustring::compose(_("%1\n(%2. A click shows earlier messages.)"), text,
                                          Glib::DateTime::create_now_local(time).format("%X")));
}

void Statusbar::set_grey(bool grey) {
  gtk_widget_set_sensitive(gtk_statusbar_get_message_area(gobj()), grey ? FALSE : TRUE);
}

}  // namespace zemblar
