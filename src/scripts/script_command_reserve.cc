#include "scripts/script_command_reserve.h"

#include <chrono>

#include "core/i18n.h"
#include "core/status.h"
#include "locomotives/lok.h"
#include "scripts/script_context.h"
#include "scripts/script_registry.h"
#include "scripts/script_wait.h"

namespace zemblar {
namespace {

void register_script_command_reserve() {
  register_script_command<ScriptCommandReserve>("reserve", N_("Reserve Block"),
                                                MenuPart::additions);
}
void register_script_command_release() {
  register_script_command<ScriptCommandRelease>("release", N_("Release Block"),
                                                MenuPart::additions);
}
[[maybe_unused]] const bool registered =
    (register_script_command_reserve(), register_script_command_release(), true);

}  // namespace

// --- Reserve ---

ScriptCommandReserve::ScriptCommandReserve(Script& owner) : ScriptCommandLok(owner) {
  connect();
}

ScriptCommandReserve::ScriptCommandReserve(Script& owner, const YAML::Node& entry)
    : ScriptCommandLok(owner, entry) {
  connect();
  block_.load(entry, 2);
}

void ScriptCommandReserve::connect() {
  block_.signal_changing().connect(signal_changing().make_slot());
  block_.signal_changed().connect([this] { signal_line_changed().emit(2); });
}

void ScriptCommandReserve::save(YAML::Emitter& out) const {
  ScriptCommandLok::save(out);
  block_.save(out);
}

Glib::ustring ScriptCommandReserve::get_format() const {
  return _("Reserve %2 for %1");
}

std::vector<ScriptLine::Argument> ScriptCommandReserve::arguments() {
  auto all = ScriptCommandLok::arguments();
  all.push_back(block_argument(2, block_));
  return all;
}

// A train that nobody knows makes the run end without a word, because the script runs for it again
// when it is known. So does a train that has gone meanwhile: nobody would end its reservation.
void ScriptCommandReserve::run(ScriptContext& context) {
  auto* lok = target(context);
  auto* block = block_.target(context);
  if (!block) return context.give_up(_("What it reserves is not there."));
  if (!lok || context.is_over()) return context.cancellable->cancel();

  auto& reservation = context.reserve(*block, *lok);
  const auto has_waited = [&] { return reservation.get_state() != Reservation::State::waits; };
  StatusNote waiting;
  if (!has_waited()) {
    waiting.show_when_free(
        Glib::ustring::compose(_("%1 waits for %2."), lok->get_name(), block->get_name()));
  }
  wait_until(context, has_waited,
             [&](const sigc::slot<void>& changed) {
               std::vector<ScopedConnection> watches;
               watches.emplace_back(reservation.signal_changed().connect(changed));
               return watches;
             },
             {});
  if (context.is_cancelled() || reservation.get_state() == Reservation::State::keeps) return;
  context.give_up(_("What it reserves is not there."));
}

// --- Release ---

ScriptCommandRelease::ScriptCommandRelease(Script& owner) : ScriptCommand(owner) {
  block_.signal_changing().connect(signal_changing().make_slot());
  block_.signal_changed().connect([this] { signal_line_changed().emit(1); });
}

ScriptCommandRelease::ScriptCommandRelease(Script& owner, const YAML::Node& entry)
    : ScriptCommandRelease(owner) {
  block_.load(entry, 1);
}

void ScriptCommandRelease::save(YAML::Emitter& out) const {
  block_.save(out);
}

Glib::ustring ScriptCommandRelease::get_format() const {
  return _("Release %1");
}

std::vector<ScriptLine::Argument> ScriptCommandRelease::arguments() {
  return {block_argument(1, block_)};
}

void ScriptCommandRelease::run(ScriptContext& context) {
  if (const auto* block = block_.target(context)) context.release(*block);
}

}  // namespace zemblar
