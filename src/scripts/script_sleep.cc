// Scripts read from a file sleep until the user starts them.

#include "core/alive_guard.h"
#include "core/i18n.h"
#include "core/layout.h"
#include "core/status.h"
#include "scripts/script.h"

namespace zemblar {
namespace {

StatusNote& note() {
  static auto* note = new StatusNote;  // never destroyed: the status line may be destroyed first
  return *note;
}

// Says how many scripts sleep, unless Open itself has put a text in the status line.
void report_sleeping() {
  note().clear();
  signal_sleeping_changed().emit();
  const auto count = sleeping_scripts();
  if (count == 0 || !get_status().empty()) return;
  note().show(Glib::ustring::compose(
      dngettext(GETTEXT_PACKAGE,
                "One script sleeps; “Start Scripts” in the Scripts panel wakes it.",
                "%1 scripts sleep; “Start Scripts” in the Scripts panel wakes them.", count),
      count));
}

[[maybe_unused]] const auto opened =
    Layout::signal_replaced().connect(sigc::ptr_fun(&report_sleeping));
[[maybe_unused]] const auto woken = signal_sleeping_changed().connect([] {
  if (note().is_active() && sleeping_scripts() == 0) note().clear();
});

// A run may end scripts, so each step asks for the child again.
void for_each_script(void (Script::*act)()) {
  auto& scripts = Layout::get().get_scripts();
  const auto count = scripts.child_count();
  for (unsigned i = 0; i < count; ++i) {
    if (auto* script = dynamic_cast<Script*>(scripts.child_at(i))) (script->*act)();
  }
}

}  // namespace

void Script::start() {
  const AliveGuard alive(*this);
  for (unsigned i = 0; alive && i < conditions.size(); ++i) conditions[i]->arm();
}

void Script::stop() {
  instances.clear();
  watches_.clear();
  to_start_.clear();
  departed_.clear();
  expected_ = instances.end();
  const AliveGuard alive(*this);
  for (unsigned i = 0; alive && i < conditions.size(); ++i) conditions[i]->disarm();
  if (alive) commands_changed_.emit();
}

bool Script::sleeps() const {
  for (const auto& line : conditions) {
    if (line->sleeps()) return true;
  }
  return false;
}

void start_scripts() {
  for_each_script(&Script::start);
}

void stop_scripts() {
  for_each_script(&Script::stop);
}

unsigned sleeping_scripts() {
  unsigned count = 0;
  for (auto* child : Layout::get().get_scripts()) {
    const auto* script = dynamic_cast<Script*>(child);
    if (script && !script->is_deleting() && script->sleeps()) ++count;
  }
  return count;
}

sigc::signal<void>& signal_sleeping_changed() {
  static sigc::signal<void> signal;
  return signal;
}

}  // namespace zemblar
