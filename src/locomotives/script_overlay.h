#pragma once

#include <list>
#include <map>

#include "core/direction.h"

namespace zemblar {

class Function;
class Lok;

/// One level of temporary changes that a script has made to speeds, directions and functions.
///
/// The constructor appends it to the current layout's list `script_overlays`, the destructor
/// removes it. A locomotive or function that ends is removed from all levels.
class ScriptOverlay {
 public:
  ScriptOverlay();
  ~ScriptOverlay();
  ScriptOverlay(const ScriptOverlay&) = delete;
  ScriptOverlay& operator=(const ScriptOverlay&) = delete;

  /// Removes the level from the list. Then each of its objects computes and sends its new value in
  /// force: speeds, directions, states.
  void remove();

  std::map<Lok*, unsigned> speeds;  ///< 0 to 126
  std::map<Lok*, Direction> directions;
  std::map<Function*, bool> states;

  /// The value in force for an object, given its own value: that of the last level with an entry
  /// for the object, else its own. An emergency stop overrides all levels.
  static unsigned apply(Lok* lok, unsigned speed);
  static Direction apply(Lok* lok, Direction direction);
  static bool apply(Function* function, bool state);

  /// Removes an object that ends from every level.
  static void forget(Lok* lok);
  static void forget(Function* function);

 private:
  void withdraw();

  bool in_force_ = true;  // while true, `overlays_` exists and holds this level
  std::list<ScriptOverlay*>& overlays_;
  std::list<ScriptOverlay*>::iterator position_;
};

}  // namespace zemblar
