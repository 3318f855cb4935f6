#include "locomotives/script_overlay.h"

#include <set>

#include "core/layout.h"
#include "devices/decoder_update.h"

namespace zemblar {
namespace {

const std::list<ScriptOverlay*>& levels() {
  return Layout::get().script_overlays;
}

/// The levels of all layouts: two of those overlap while a file is opened.
std::set<ScriptOverlay*>& all_levels() {
  static std::set<ScriptOverlay*> all;
  return all;
}

/// The last level that names the key decides.
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
  overlays_.erase(position_);
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
