#include "scripts/watching_event.h"

#include "core/i18n.h"
#include "scripts/script.h"

namespace zemblar {
namespace {

/// How often scripts may set each other off before they are slowed down.
constexpr unsigned most_rounds = 50;
constexpr std::chrono::seconds counting_time(1);
constexpr std::chrono::milliseconds slow_round(200);

}  // namespace

bool WatchingEvent::is_armed() const {
  if (depends_on_lines_before()) return !opens_alternative();
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
  later_.cancel();
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
  const sigc::slot<void> then = sigc::mem_fun(*this, &WatchingEvent::fire);
  announce_first_two();
  then();
}

void WatchingEvent::fire() {
  if (Script::is_evaluating()) return fire_later();
  later_.cancel();
  signal_triggered().emit();
}

void WatchingEvent::fire_later() {
  if (later_.armed()) return;
  const auto now = Clock::now();
  if (now - counted_since_ > counting_time) {
    rounds_ = 0;
    counted_since_ = now;
  }
  const bool circles = ++rounds_ > most_rounds;
  if (circles) report_circle();
  later_ = Timeout::once(circles ? slow_round : std::chrono::milliseconds(0),
                         [this] { signal_triggered().emit(); });
}

}  // namespace zemblar
