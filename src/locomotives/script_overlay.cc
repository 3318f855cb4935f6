#include "locomotives/script_overlay.h"

#include <set>
#include <utility>

#include "core/layout.h"
#include "devices/decoder_update.h"
#include "locomotives/function.h"
#include "locomotives/lok.h"

namespace zemblar {
namespace {

const std::list<ScriptOverlay*>& levels() {
  return Layout::get().script_overlays;
}

/// The levels of all layouts: two layouts exist at the same time while a file is opened.
std::set<ScriptOverlay*>& all_levels() {
  static std::set<ScriptOverlay*> all;
  return all;
}

/// The value of the last level that has the key, else `value`.
template <typename Key, typename Value, typename Entry>
Value last_of(Key* key, Value value, std::map<Key*, Entry> ScriptOverlay::*entries) {
  for (const auto* level : levels()) {
    const auto found = (level->*entries).find(key);
    if (found != (level->*entries).end()) value = static_cast<Value>(found->second);
  }
  return value;
}

}  // namespace

ScriptOverlay::ScriptOverlay()
    : overlays_(Layout::get().script_overlays), position_(overlays_.insert(overlays_.end(), this)) {
  all_levels().insert(this);
}

ScriptOverlay::~ScriptOverlay() {
  all_levels().erase(this);
  withdraw();
}

void ScriptOverlay::withdraw() {
  if (std::exchange(in_force_, false)) overlays_.erase(position_);
}

// A handler may end objects, which then remove their entries here, and withdraw other levels.
void ScriptOverlay::remove() {
  withdraw();
  const auto refresh_all = [](auto& entries, auto refresh) {
    while (!entries.empty()) {
      auto* object = entries.begin()->first;
      entries.erase(entries.begin());
      if (!object->is_deleting()) (object->*refresh)();
    }
  };
  refresh_all(speeds, &Lok::apply_speed_overlay);
  refresh_all(directions, &Lok::apply_direction_overlay);
  refresh_all(states, &Function::apply_state_overlay);
}

unsigned ScriptOverlay::apply(Lok* lok, unsigned speed) {
  return speed == DecoderUpdate::emergency_stop ? speed
                                                : last_of(lok, speed, &ScriptOverlay::speeds);
}

Direction ScriptOverlay::apply(Lok* lok, Direction direction) {
  return last_of(lok, direction, &ScriptOverlay::directions);
}

bool ScriptOverlay::apply(Function* function, bool state) {
  return last_of(function, state, &ScriptOverlay::states);
}

void ScriptOverlay::forget(Lok* lok) {
  for (auto* level : all_levels()) {
    level->speeds.erase(lok);
    level->directions.erase(lok);
  }
}

void ScriptOverlay::forget(Function* function) {
  for (auto* level : all_levels()) level->states.erase(function);
}

}  // namespace zemblar
