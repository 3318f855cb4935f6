#include "scripts/script_context.h"

#include <algorithm>
#include <utility>

#include "core/i18n.h"
#include "core/status.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"
#include "scripts/script.h"
#include "scripts/script_turn.h"
#include "track/point_base.h"
#include "track/point_guard.h"

namespace zemblar {

// Cancelling may end a waiting run and so destroy this context, hence `held`.
ScriptContext::ScriptContext(Script& owner, const EventInstance& of)
    : cancellable(Gio::Cancellable::create()),
      instance(of),
      script(&owner),
      block_(of.block),
      lok_(of.lok) {
  if (block_) block_deleted_ = block_->signal_deleted().connect([this] { block_ = nullptr; });
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

// What ends may wake a run, and the last handler of `signal_over_` may end this one.
void ScriptContext::follow_instance() {
  instance_finished_ =
      script->signal_instance_finished().connect([this](const EventInstance& finished) {
        if (finished != instance || is_over_) return;
        is_over_ = true;
        const auto over = signal_over_;
        const ScriptTurn turn;
        end_reservations();
        over.emit();
      });
}

Lok* ScriptContext::lok() const {
  return lok_ && !lok_->is_deleting() ? lok_ : nullptr;
}

Block* ScriptContext::block() const {
  return block_ && !block_->is_deleting() ? block_ : nullptr;
}

void ScriptContext::give_up(const Glib::ustring& why) {
  set_status(script ? Glib::ustring::compose(_("%1 stops: %2"), script->get_name(), why) : why);
  const auto held = cancellable;
  held->cancel();
}

void ScriptContext::push() {
  overlays.push_back(std::make_unique<ScriptOverlay>());
  point_overlays.push_back(std::make_unique<PointOverlay>());
}

void ScriptContext::pop() {
  if (overlays.empty()) return;
  const auto last = std::move(overlays.back());
  overlays.pop_back();
  const auto last_points = std::move(point_overlays.back());
  point_overlays.pop_back();
  last->remove();
  last_points->remove();
}

// No run that waits for what changes here goes on meanwhile, perhaps one of the same ending script.
void ScriptContext::take_all_back() {
  const ScriptTurn turn;
  while (!overlays.empty()) {
    const auto oldest = std::move(overlays.front());
    overlays.pop_front();
    const auto oldest_points = std::move(point_overlays.front());
    point_overlays.pop_front();
    oldest->remove();
    oldest_points->remove();
  }
  end_reservations();
}

void ScriptContext::end_reservations() {
  while (!reservations_.empty()) {
    const auto first = std::move(reservations_.front());
    reservations_.pop_front();
  }
}

// What is over is dropped here, so that a run which goes on for long keeps no more than it needs.
Reservation& ScriptContext::reserve(Block& block, Lok& lok) {
  std::erase_if(reservations_,
                [](const auto& one) { return one->get_state() == Reservation::State::over; });
  return *reservations_.emplace_back(std::make_unique<Reservation>(block, lok));
}

void ScriptContext::release(const Block& block) {
  for (;;) {
    const auto found = std::ranges::find_if(
        reservations_, [&](const auto& one) { return one->get_block() == &block; });
    if (found == reservations_.end()) return;
    const auto released = std::move(*found);
    reservations_.erase(found);
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

void ScriptContext::set_point(PointBase& point, PointState& state) {
  if (overlays.empty()) {
    if (lets_script_set(point, state)) point.set_state(&state);
    return;
  }
  point_overlays.back()->set(point, state);
}

}  // namespace zemblar
