#include "scripts/script_command_wait.h"

#include <yaml-cpp/yaml.h>

#include <cmath>
#include <limits>

#include "core/i18n.h"
#include "core/yaml_io.h"
#include "runtime/fiber.h"
#include "runtime/timer.h"
#include "scripts/script.h"
#include "scripts/script_context.h"
#include "scripts/script_entry.h"
#include "scripts/script_registry.h"

namespace zemblar {
namespace {

void register_script_command_wait() {
  register_script_command<ScriptCommandWait>("wait", N_("Wait"));
}
void register_script_command_wait_init_event() {
  register_script_command<ScriptCommandWaitInitEvent>("wait_init_event",
                                                      N_("Wait until initial event is finished"));
}
[[maybe_unused]] const bool registered =
    (register_script_command_wait(), register_script_command_wait_init_event(), true);

constexpr std::chrono::milliseconds tenth(100);
constexpr double shortest = 0.1;
constexpr float longest = 3600.0F;

unsigned read_delay(const YAML::Node& node) {
  double seconds = 0;
  node >> seconds;
  const float tenths = std::round(static_cast<float>(seconds) * 10.0F);
  constexpr auto limit = static_cast<float>(std::numeric_limits<int>::max());
  if (!(tenths >= 0) || tenths >= limit) throw YAML::InvalidScalar(node.Mark());
  return static_cast<unsigned>(tenths);
}

}  // namespace

ScriptCommandWait::ScriptCommandWait(Script& owner, const YAML::Node& entry)
    : ScriptCommand(owner), delay(read_delay(element(entry, 1))) {}

void ScriptCommandWait::save(YAML::Emitter& out) const {
  out << shortest_text(delay / 10.0);
}

Glib::ustring ScriptCommandWait::get_format() const {
  return _("Wait %1 seconds");
}

std::vector<ScriptLine::Argument> ScriptCommandWait::arguments() {
  const auto range = [this] {
    return SpinRange{.min = 0.1, .max = 3600.0, .value = delay / 10.0, .step = 0.1, .digits = 1};
  };
  return {{.type = ArgType::number,
           .text = [this] { return Glib::ustring::format(delay / 10.0); },
           .range = range,
           .set_number = [this](double seconds) { set_seconds(seconds); }}};
}

void ScriptCommandWait::set_seconds(double seconds) {
  const unsigned tenths = seconds < shortest ? 1
                          : static_cast<float>(seconds) > longest
                              ? 36000
                              : static_cast<unsigned>(std::lround(seconds * 10.0));
  if (tenths != delay) signal_changing().emit();
  delay = tenths;
  signal_line_changed().emit(1);
}

// The line may have ended when the fiber continues, so no member is used after the wait.
void ScriptCommandWait::run(ScriptContext& context) {
  sleep_for(delay * tenth, context.cancellable);
}

Glib::ustring ScriptCommandWaitInitEvent::get_format() const {
  return _("Wait until initial event is finished");
}

// Both signals may be emitted before the fiber continues. The first one resumes it and disconnects
// both.
void ScriptCommandWaitInitEvent::run(ScriptContext& context) {
  if (context.is_cancelled()) return;
  sigc::connection finished;
  sigc::connection cancelled;
  fiber::yield([&](fiber* waiting) {
    const auto wake = [&finished, &cancelled, waiting] {
      auto* const woken = waiting;
      finished.disconnect();
      cancelled.disconnect();
      fiber::resume(woken, 0);
    };
    finished = context.script->signal_instance_finished().connect(
        [wake, instance = context.instance](const EventInstance& which) {
          if (which == instance) wake();
        });
    cancelled = context.cancellable->signal_cancelled().connect(wake);
  });
}

}  // namespace zemblar
