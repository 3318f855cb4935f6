#include "scripts/script_context.h"

#include <utility>

#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "scripts/script.h"

namespace zemblar {

// Cancelling may end a waiting run and so destroy this context, hence `held`.
ScriptContext::ScriptContext(Script& owner, const EventInstance& of)
    : cancellable(Gio::Cancellable::create()), instance(of), script(&owner), lok_(of.lok) {
  if (lok_) lok_deleted_ = lok_->signal_deleted().connect([this] { lok_ = nullptr; });
  script_deleted_ = owner.signal_deleted().connect([this] {
    script = nullptr;
    take_all_back();
    const auto held = cancellable;
    held->cancel();
  });
  commands_changed_ = owner.signal_commands_changed().connect([this] {
    const auto held = cancellable;
    held->cancel();
  });
}

ScriptContext::~ScriptContext() {
  take_all_back();
}

Lok* ScriptContext::lok() const {
  return lok_ && !lok_->is_deleting() ? lok_ : nullptr;
}

void ScriptContext::push() {
  overlays.push_back(std::make_unique<ScriptOverlay>());
}

void ScriptContext::pop() {
  if (overlays.empty()) return;
  const auto last = std::move(overlays.back());
  overlays.pop_back();
  last->remove();
}

void ScriptContext::take_all_back() {
  while (!overlays.empty()) {
    const auto oldest = std::move(overlays.front());
    overlays.pop_front();
    oldest->remove();
  }
}

void ScriptContext::set_speed(Lok& lok, unsigned speed) {
  if (overlays.empty()) return lok.set_speed(speed);
  overlays.back()->speeds[&lok] = speed;
  lok.apply_speed_overlay();
}

void ScriptContext::set_direction(Lok& lok, Direction direction) {
  if (overlays.empty()) return lok.set_direction(direction);
  overlays.back()->directions[&lok] = direction;
  lok.apply_direction_overlay();
}

void ScriptContext::set_state(Function& function, bool state) {
  if (overlays.empty()) return function.set_state(state);
  if (function.get_type() == Function::Type::Pulse) return function.set_state(true);
  overlays.back()->states[&function] = state;
  function.apply_state_overlay();
}

}  // namespace zemblar
