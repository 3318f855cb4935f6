#include "scripts/watching_event.h"

#include "core/i18n.h"

namespace zemblar {

bool WatchingEvent::is_armed() const {
  return !watches_.empty();
}

bool WatchingEvent::sleeps() const {
  return has_subject() && !is_armed();
}

void WatchingEvent::arm() {
  watch_chosen();
}

void WatchingEvent::disarm() {
  awake_ = false;
  cancel_trigger();
  if (watches_.empty()) return;
  watches_.clear();
  signal_line_changed().emit(1);
}

Glib::ustring WatchingEvent::asleep_because() const {
  if (is_armed()) return {};
  return sleeps() ? _("This condition sleeps: choose what it is about, or “Start Scripts”, and it "
                      "watches the railway.")
                  : no_subject_words();
}

void WatchingEvent::watch_chosen() {
  awake_ = true;
  watches_ = watch();
  announce();
}

void WatchingEvent::follow_subject() {
  if (!watches_.empty()) watches_ = watch();
  announce_first_two();
}

// A handler of the announcement may end the line.
void WatchingEvent::announce() {
  const sigc::slot<void> then = sigc::mem_fun(*this, &WatchingEvent::trigger);
  announce_first_two();
  then();
}

}  // namespace zemblar
